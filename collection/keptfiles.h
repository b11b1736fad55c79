#pragma once

#include "collection/fileplace.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <string>

/// The files that must stay when others are deleted. One file can have several paths: through links, through
/// linked or mounted folders, or because it was added twice. Paths of any bytes, as the system has them, or
/// texts. Any thread.
class KeptFiles
{
public:
    /// Also what the path leads to, when it names a link.
    void add(const std::string& path);
    void add(const QString& path);
    /// Whether deleting what the path names would take one of the files away, or the name that it is known
    /// by. Deleting a link to a kept file would not, nor would another hard link.
    bool wouldLose(const std::string& path) const;
    bool wouldLose(const QString& path) const;
    bool wouldLose(const FilePlace& found) const;

private:
    using Place = FilePlace::Place;

    QSet<QByteArray> m_entries; ///< folder entries, spelt in one way each
    QSet<Place> m_places;       ///< told by the disk, however the folders are spelt
    QHash<FilePlace::FileId, QSet<Place>>
        m_files; ///< with the places that they are known by, in letters of one case
};
