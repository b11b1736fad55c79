#include "collection/keptfiles.h"

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

/// What the disk tells of an entry.
struct KeptFiles::Found
{
    bool known = false; ///< false where it tells nothing
    Place place;
    Place foldedPlace;
    bool isFile = false; ///< and no link
    bool hasOtherNames = false;
    FileId file;
};

#ifdef Q_OS_UNIX
KeptFiles::Found KeptFiles::find(const QString& entry)
{
    Found found;
    const QFileInfo path(entry);
    struct stat folder = {};
    struct stat file = {};
    if (::stat(QFile::encodeName(path.path()).constData(), &folder) != 0 ||
        ::lstat(QFile::encodeName(entry).constData(), &file) != 0)
        return found;
    const FileId folderId(folder.st_dev, folder.st_ino);
    found.known = true;
    found.place = Place(folderId, spelling(path.fileName()));
    found.foldedPlace =
        Place(folderId, path.fileName().normalized(QString::NormalizationForm_C).toCaseFolded());
    found.isFile = S_ISREG(file.st_mode);
    found.hasOtherNames = file.st_nlink > 1;
    found.file = FileId(file.st_dev, file.st_ino);
    return found;
}
#else
KeptFiles::Found KeptFiles::find(const QString&)
{
    return Found();
}
#endif

void KeptFiles::add(const QString& path)
{
    QString next = path;
    for (int step = 0; step < longestChain && !next.isEmpty(); ++step) {
        const QString entry = entryOf(next);
        m_entries.insert(spelling(entry));
        const Found found = find(entry);
        if (found.known)
            m_places.insert(found.place);
        if (found.isFile)
            m_files[found.file].insert(found.foldedPlace);
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
    const Found found = find(entry);
    if (!found.known)
        return false;
    if (m_places.contains(found.place))
        return true;
    // The last name of a kept file, or one that may be the known name in letters of another case.
    const auto kept = m_files.constFind(found.file);
    return kept != m_files.constEnd() && (!found.hasOtherNames || kept->contains(found.foldedPlace));
}
