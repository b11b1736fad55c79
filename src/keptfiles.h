#pragma once

#include <QPair>
#include <QSet>
#include <QString>

#include <optional>

/// The files that must stay when others are deleted. One file can have several paths: through links, through
/// linked or mounted folders, or because it was added twice. Any thread.
class KeptFiles
{
public:
    /// Also what the path leads to, when it names a link.
    void add(const QString& path);
    /// Whether deleting what the path names would take one of the files away. Deleting a link to a kept file
    /// would not, nor would another hard link.
    bool wouldLose(const QString& path) const;

private:
    using FileId = QPair<quint64, quint64>; ///< device and number on it

    static std::optional<FileId> onlyNamedFile(const QString& path);

    QSet<QString> m_entries; ///< folder entries, spelt in one way each
    QSet<FileId> m_files;    ///< told by the disk, however the folders are spelt
};
