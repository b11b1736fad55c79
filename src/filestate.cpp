#include "filestate.h"

#ifdef Q_OS_UNIX
#include <QFile>

#include <sys/stat.h>
#else
#include <QDateTime>
#include <QFileInfo>
#endif

#ifdef Q_OS_UNIX
FileState FileState::of(const QString& path)
{
    FileState state;
    struct stat found = {};
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &found) != 0 || !S_ISREG(found.st_mode))
        return state;
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
#endif
