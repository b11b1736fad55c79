#pragma once

#include "filebytes.h"

#include <QDir>
#include <QTemporaryDir>

/// While it lives, the user's trash is one of its own, on the disk of other temporary files. To be made
/// before there are threads.
class OwnTrash
{
public:
    OwnTrash() { use(m_folder.path().toLocal8Bit()); }
    ~OwnTrash()
    {
        if (m_former.isNull())
            qunsetenv(variable);
        else
            qputenv(variable, m_former);
    }
    Q_DISABLE_COPY(OwnTrash)

    /// Makes it a place where no trash can be, on the same disk.
    void spoil() const { use(Fixtures::saveBytes("no folder", m_folder.filePath("spoilt")).toLocal8Bit()); }
    /// The files in it.
    QStringList files() const { return namesIn("files"); }
    /// The notes of where they came from.
    QStringList notes() const { return namesIn("info"); }
    QString path(const QString& name) const { return m_folder.filePath("Trash/files/" + name); }
    /// Forgets all of it.
    void empty() const
    {
        QDir(m_folder.filePath("Trash")).removeRecursively();
        use(m_folder.path().toLocal8Bit());
    }

private:
    static constexpr const char* variable = "XDG_DATA_HOME";

    static void use(const QByteArray& folder) { qputenv(variable, folder); }
    QStringList namesIn(const QString& part) const
    {
        return QDir(m_folder.filePath("Trash/" + part)).entryList(QDir::Files | QDir::Hidden | QDir::System);
    }

    const QByteArray m_former = qgetenv(variable);
    const QTemporaryDir m_folder;
};
