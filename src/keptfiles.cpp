#include "keptfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <system_error>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {
constexpr int longestChain = 40;

/// The folder entry that the path names: links are followed up to the folder, the last step is not.
QString entryOf(const QString& path)
{
    const QFileInfo file(path);
    const QString folder = file.dir().canonicalPath();
    return folder.isEmpty() ? QDir::cleanPath(file.absoluteFilePath())
                            : folder + QLatin1Char('/') + file.fileName();
}

/// As it is compared: where letters of either case may be the same file, it rather stays.
QString spelling(const QString& entry)
{
#if defined(Q_OS_WIN) || defined(Q_OS_MACOS)
    return entry.toCaseFolded();
#else
    return entry;
#endif
}

std::filesystem::path nativePath(const QString& path)
{
#ifdef Q_OS_WIN
    return std::filesystem::path(path.toStdWString());
#else
    return std::filesystem::path(QFile::encodeName(path).toStdString());
#endif
}

/// What the link at the entry leads to, from its own folder on; empty if there is no link. Not cleaned: what
/// ".." means is told by the disk alone, not by the text before it.
QString targetOf(const QString& entry)
{
    std::error_code failure;
    const std::filesystem::path target = std::filesystem::read_symlink(nativePath(entry), failure);
    if (failure)
        return QString();
    const std::filesystem::path whole = nativePath(entry).parent_path() / target;
#ifdef Q_OS_WIN
    return QString::fromStdWString(whole.generic_wstring());
#else
    return QFile::decodeName(whole.c_str());
#endif
}
} // namespace

#ifdef Q_OS_UNIX
/// Of what lies at the path itself; nothing for what is no file, and for a file with other names, which
/// outlives the loss of one.
std::optional<KeptFiles::FileId> KeptFiles::onlyNamedFile(const QString& path)
{
    struct stat status = {};
    if (lstat(QFile::encodeName(path).constData(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_nlink != 1)
        return std::nullopt;
    return FileId(status.st_dev, status.st_ino);
}
#else
std::optional<KeptFiles::FileId> KeptFiles::onlyNamedFile(const QString&)
{
    return std::nullopt;
}
#endif

void KeptFiles::add(const QString& path)
{
    QString next = path;
    for (int step = 0; step < longestChain && !next.isEmpty(); ++step) {
        const QString entry = entryOf(next);
        m_entries.insert(spelling(entry));
        if (const std::optional<FileId> file = onlyNamedFile(entry))
            m_files.insert(*file);
        next = targetOf(entry);
    }
}

bool KeptFiles::wouldLose(const QString& path) const
{
    if (m_entries.isEmpty())
        return false;
    const QString entry = entryOf(path);
    if (m_entries.contains(spelling(entry)))
        return true;
    const std::optional<FileId> file = onlyNamedFile(entry);
    return file && m_files.contains(*file);
}
