#include "collection/fileremoval.h"

#include <QDebug>
#include <QFile>

void RemovedFiles::append(const RemovedFiles& further)
{
    trashed += further.trashed;
    deleted += further.deleted;
    failed += further.failed;
}

void FileRemoval::remove(const QString& path, const FileState& state)
{
    RemovedFiles::Trashed trashed = {path, {}};
    std::string error;
    const base::FileState expected = state.exists() ? state.file : base::FileState();
    switch (m_trash.take(QFile::encodeName(path).toStdString(), expected, trashed.file, error)) {
    case base::Trash::Taking::Done:
        m_removed.trashed.append(trashed);
        break;
    case base::Trash::Taking::NoTrash:
        deleteForGood(path, state, QString::fromStdString(error));
        break;
    case base::Trash::Taking::Failed:
        leave(path, QString::fromStdString(error));
        break;
    }
}

void FileRemoval::deleteForGood(const QString& path, const FileState& state, const QString& reason)
{
    const QString failure = removeIfUnchanged(path, state);
    if (!failure.isEmpty())
        return leave(path, failure);
    if (m_removed.deleted.isEmpty())
        qWarning("%s is deleted for good: %s", qUtf8Printable(path), qUtf8Printable(reason));
    m_removed.deleted.append({path, reason});
}

void FileRemoval::leave(const QString& path, const QString& reason)
{
    qWarning("%s stays on disk: %s", qUtf8Printable(path), qUtf8Printable(reason));
    m_removed.failed.append({path, reason});
}

QString FileReturn::bringBack(const RemovedFiles::Trashed& file)
{
    std::string error;
    if (m_trash.restore(file.file, error) == base::Trash::Restoring::Done)
        return QString();
    QString reason = QString::fromStdString(error);
    qWarning("%s does not come back: %s", qUtf8Printable(file.path), qUtf8Printable(reason));
    return reason;
}
