#include "collection/filestate.h"

#include <QFile>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <QDateTime>
#include <QFileInfo>
#endif

namespace {
QString whenChanged()
{
    return QStringLiteral("it is not the file that was listed any more");
}
} // namespace

#ifdef Q_OS_UNIX
namespace {
FileState stateFrom(const struct stat& found)
{
    FileState state;
#ifdef Q_OS_DARWIN
    const timespec modified = found.st_mtimespec;
#else
    const timespec modified = found.st_mtim;
#endif
    state.device = quint64(found.st_dev);
    state.number = quint64(found.st_ino);
    state.modified = qint64(modified.tv_sec) * 1000000000 + modified.tv_nsec;
    state.size = qint64(found.st_size);
    return state;
}

FileState entryState(int folder, const QByteArray& name)
{
    struct stat found = {};
    const bool exists = ::fstatat(folder, name.constData(), &found, AT_SYMLINK_NOFOLLOW) == 0 &&
                        (S_ISREG(found.st_mode) || S_ISLNK(found.st_mode));
    return exists ? stateFrom(found) : FileState();
}

/// For finding names in the folder; -1 with errno set.
int openFolder(const QByteArray& path)
{
#ifdef O_PATH
    return ::open(path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
#else
    return ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
#endif
}
} // namespace

FileState FileState::of(const QString& path)
{
    struct stat found = {};
    const bool exists =
        !path.isEmpty() && ::stat(QFile::encodeName(path).constData(), &found) == 0 && S_ISREG(found.st_mode);
    return exists ? stateFrom(found) : FileState();
}

FileState FileState::ofEntry(const QString& path)
{
    return path.isEmpty() ? FileState() : entryState(AT_FDCWD, QFile::encodeName(path));
}

QString removeIfUnchanged(const QString& path, const FileState& state)
{
    const QByteArray whole = QFile::encodeName(path);
    const int nameBegin = whole.lastIndexOf('/') + 1;
    const QByteArray name = whole.mid(nameBegin);
    const int folder = openFolder(nameBegin > 0 ? whole.left(nameBegin) : QByteArray("."));
    if (folder < 0)
        return qt_error_string(errno);
    struct stat there = {};
    const bool gone = ::fstatat(folder, name.constData(), &there, AT_SYMLINK_NOFOLLOW) != 0;
    const bool unchanged = !gone && state.exists() && entryState(folder, name) == state;
    QString reason;
    if (gone || (unchanged && ::unlinkat(folder, name.constData(), 0) != 0))
        reason = qt_error_string(errno);
    else if (!unchanged)
        reason = whenChanged();
    ::close(folder);
    return reason;
}
#else
FileState FileState::of(const QString& path)
{
    FileState state;
    const QFileInfo found(path);
    if (path.isEmpty() || !found.isFile())
        return state;
    state.path = path;
    state.modified = found.lastModified().toMSecsSinceEpoch();
    state.size = found.size();
    return state;
}

FileState FileState::ofEntry(const QString& path)
{
    return of(path);
}

QString removeIfUnchanged(const QString& path, const FileState& state)
{
    if (QFileInfo(path).exists() && (!state.exists() || FileState::ofEntry(path) != state))
        return whenChanged();
    QFile file(path);
    return file.remove() ? QString() : file.errorString();
}
#endif
