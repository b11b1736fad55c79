#pragma once

#include <QSet>
#include <QString>

/// The files that must stay when others are deleted. One file can have several paths: through links, through
/// linked folders, or because it was added twice. Any thread.
class KeptFiles
{
public:
    /// Also what the path leads to, when it names a link.
    void add(const QString& path);
    /// Whether deleting what the path names would take one of the files away. Deleting a link to a kept file
    /// would not, nor would another hard link.
    bool wouldLose(const QString& path) const;

private:
    QSet<QString> m_entries; ///< folder entries, spelt in one way each
};
