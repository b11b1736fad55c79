#include "collection/fileplace.h"

#include "base/platform.h"

#include <QFile>
#include <QString>

#include <filesystem>
#include <system_error>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace fs = std::filesystem;

namespace {
fs::path nativePath(const std::string& path)
{
#ifdef Q_OS_WIN
    return fs::path(QFile::decodeName(path.c_str()).toStdWString());
#else
    return fs::path(path);
#endif
}

std::string bytesOf(const fs::path& path)
{
#ifdef Q_OS_WIN
    return QFile::encodeName(QString::fromStdWString(path.generic_wstring())).toStdString();
#else
    return path.native();
#endif
}

/// As it is compared: where letters of either case may be the same file, it rather stays.
QByteArray spelling(const QByteArray& entry)
{
#if defined(Q_OS_WIN) || defined(Q_OS_MACOS)
    return QFile::encodeName(QFile::decodeName(entry).toCaseFolded());
#else
    return entry;
#endif
}

QByteArray entryOf(const std::string& path)
{
    const fs::path file = nativePath(path);
    const fs::path above = file.parent_path();
    const std::string folder = base::realPath(above.empty() ? "." : bytesOf(above));
    if (!folder.empty())
        return QByteArray::fromStdString(folder + '/' + bytesOf(file.filename()));
    std::error_code failure;
    return QByteArray::fromStdString(bytesOf(fs::absolute(file, failure).lexically_normal()));
}

#ifdef Q_OS_UNIX
QByteArray folded(const QByteArray& name)
{
    return QFile::decodeName(name).normalized(QString::NormalizationForm_C).toCaseFolded().toUtf8();
}

void askDisk(const QByteArray& path, FilePlace& found)
{
    const int slash = path.lastIndexOf('/');
    const QByteArray name = path.mid(slash + 1);
    struct stat folder = {};
    struct stat file = {};
    if (::stat(path.left(slash + 1).constData(), &folder) != 0 || ::lstat(path.constData(), &file) != 0)
        return;
    const FilePlace::FileId folderId(folder.st_dev, folder.st_ino);
    found.known = true;
    found.place = FilePlace::Place(folderId, spelling(name));
    found.foldedPlace = FilePlace::Place(folderId, folded(name));
    found.isFile = S_ISREG(file.st_mode);
    found.names = file.st_nlink;
    found.file = FilePlace::FileId(file.st_dev, file.st_ino);
}
#else
void askDisk(const QByteArray&, FilePlace&) {}
#endif
} // namespace

FilePlace FilePlace::of(const std::string& path)
{
    FilePlace found;
    found.m_path = entryOf(path);
    found.entry = spelling(found.m_path);
    askDisk(found.m_path, found);
    return found;
}

/// Not cleaned: what ".." means is told by the disk alone, not by the text before it.
std::string FilePlace::target() const
{
    const fs::path path = nativePath(m_path.toStdString());
    std::error_code failure;
    const fs::path target = fs::read_symlink(path, failure);
    return failure ? std::string() : bytesOf(path.parent_path() / target);
}
