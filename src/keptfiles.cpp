#include "keptfiles.h"

#include <QDir>
#include <QFileInfo>

namespace {
constexpr int longestChain = 40;

/// The folder entry that the path names: links are followed up to the folder, the last step is not.
QString entryOf(const QString& path)
{
    const QFileInfo file(path);
    const QString folder = file.dir().canonicalPath();
    QString entry = folder.isEmpty() ? QDir::cleanPath(file.absoluteFilePath())
                                     : folder + QLatin1Char('/') + file.fileName();
#if defined(Q_OS_WIN) || defined(Q_OS_MACOS)
    // Where letters of either case may be the same file, it rather stays.
    return entry.toCaseFolded();
#else
    return entry;
#endif
}
} // namespace

void KeptFiles::add(const QString& path)
{
    QString next = path;
    for (int step = 0; step < longestChain; ++step) {
        m_entries.insert(entryOf(next));
        const QFileInfo file(next);
        if (!file.isSymLink())
            return;
        next = file.symLinkTarget();
    }
}

bool KeptFiles::wouldLose(const QString& path) const
{
    return !m_entries.isEmpty() && m_entries.contains(entryOf(path));
}
