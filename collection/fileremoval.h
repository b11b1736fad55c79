#pragma once

#include "base/trash.h"
#include "collection/filestate.h"

#include <QMetaType>
#include <QString>
#include <QVector>

/// What became of the files of one deletion.
struct RemovedFiles
{
    struct Trashed
    {
        QString path;           ///< as it was asked for
        base::TrashedFile file; ///< what brings it back
    };
    struct Told
    {
        QString path;
        QString reason;
    };

    QVector<Trashed> trashed;
    QVector<Told> deleted; ///< for good, with the reason why they are not in a trash
    QVector<Told> failed;  ///< that are still there, or were gone before

    bool isEmpty() const { return trashed.isEmpty() && deleted.isEmpty() && failed.isEmpty(); }
    void append(const RemovedFiles& further);
};

Q_DECLARE_METATYPE(RemovedFiles)

/// Takes files away: into the desktop's trash, for good where there is none. One object for each deletion;
/// one thread at a time.
class FileRemoval
{
public:
    /// Takes away what lies at the path itself, never a folder, if it is in that state. What stays is logged
    /// in one line, and so is the first file that is deleted for good.
    void remove(const QString& path, const FileState& state);
    /// Notes, and logs in one line, that a file stays for that reason.
    void leave(const QString& path, const QString& reason);
    /// What became of the files so far.
    const RemovedFiles& removed() const { return m_removed; }

private:
    void deleteForGood(const QString& path, const FileState& state, const QString& reason);

    base::Trash m_trash;
    RemovedFiles m_removed;
};

/// Brings files back from the trash. One object for each undo; one thread at a time.
class FileReturn
{
public:
    /// Puts the file back where it was, if nothing stands there and nobody changed it since. The reason why
    /// it is not back, and then nothing has changed and the log has it in one line; else empty.
    QString bringBack(const RemovedFiles::Trashed& file);

private:
    base::Trash m_trash;
};
