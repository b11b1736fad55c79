#pragma once

#include <QHash>
#include <QPair>
#include <QSet>
#include <QString>

/// The files that must stay when others are deleted. One file can have several paths: through links, through
/// linked or mounted folders, or because it was added twice. Any thread.
class KeptFiles
{
public:
    /// Also what the path leads to, when it names a link.
    void add(const QString& path);
    /// Whether deleting what the path names would take one of the files away, or the name that it is known
    /// by. Deleting a link to a kept file would not, nor would another hard link.
    bool wouldLose(const QString& path) const;

private:
    using FileId = QPair<quint64, quint64>; ///< device and number on it
    using Place = QPair<FileId, QString>;   ///< folder and name in it
    struct Found;

    static Found find(const QString& entry);

    QSet<QString> m_entries;            ///< folder entries, spelt in one way each
    QSet<Place> m_places;               ///< told by the disk, however the folders are spelt
    QHash<FileId, QSet<Place>> m_files; ///< with the places that they are known by, in letters of one case
};
