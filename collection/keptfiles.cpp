#include "collection/keptfiles.h"

#include <QFile>

namespace {
constexpr int longestChain = 40;
}

void KeptFiles::add(const std::string& path)
{
    std::string next = path;
    for (int step = 0; step < longestChain && !next.empty(); ++step) {
        const FilePlace found = FilePlace::of(next);
        m_entries.insert(found.entry);
        if (found.known)
            m_places.insert(found.place);
        if (found.isFile)
            m_files[found.file].insert(found.foldedPlace);
        next = found.target();
    }
}

void KeptFiles::add(const QString& path)
{
    add(QFile::encodeName(path).toStdString());
}

bool KeptFiles::wouldLose(const std::string& path) const
{
    return !m_entries.isEmpty() && wouldLose(FilePlace::of(path));
}

bool KeptFiles::wouldLose(const QString& path) const
{
    return wouldLose(QFile::encodeName(path).toStdString());
}

bool KeptFiles::wouldLose(const FilePlace& found) const
{
    if (m_entries.contains(found.entry))
        return true;
    if (!found.known)
        return false;
    if (m_places.contains(found.place))
        return true;
    // The last name of a kept file, or one that may be the known name in letters of another case.
    const auto kept = m_files.constFind(found.file);
    return kept != m_files.constEnd() && (found.names < 2 || kept->contains(found.foldedPlace));
}
