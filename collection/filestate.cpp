#include "collection/filestate.h"

#include <QFile>

#ifdef Q_OS_UNIX
#include "base/descriptor_posix.h"

#include <cerrno>
#include <fcntl.h>
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
FileState stateFrom(const base::FileState& file, bool there)
{
    return there ? FileState{QString(), file, true} : FileState();
}

FileState entryState(const base::FileState& entry)
{
    return stateFrom(entry, entry.regular || entry.link);
}
} // namespace

FileState FileState::of(const QString& path)
{
    base::FileState found;
    const bool exists = !path.isEmpty() && base::stateOf(QFile::encodeName(path).toStdString(), found);
    return stateFrom(found, exists && found.regular);
}

FileState FileState::ofEntry(const QString& path)
{
    base::FileState found;
    const bool exists =
        !path.isEmpty() && base::stateAt(AT_FDCWD, QFile::encodeName(path).toStdString(), found);
    return exists ? entryState(found) : FileState();
}

QString removeIfUnchanged(const QString& path, const FileState& state)
{
    const std::string whole = QFile::encodeName(path).toStdString();
    const std::string name = base::nameOf(whole);
    const base::Descriptor folder = base::openFolderOf(whole);
    if (!folder.isOpen())
        return qt_error_string(errno);
    base::FileState there;
    const bool gone = !base::stateAt(folder.fd, name, there);
    const bool unchanged = !gone && state.exists() && entryState(there) == state;
    if (gone || (unchanged && ::unlinkat(folder.fd, name.c_str(), 0) != 0))
        return qt_error_string(errno);
    return unchanged ? QString() : whenChanged();
}
#else
FileState FileState::of(const QString& path)
{
    FileState state;
    const QFileInfo found(path);
    if (path.isEmpty() || !found.isFile())
        return state;
    state.path = path;
    state.file.modified = found.lastModified().toMSecsSinceEpoch();
    state.file.size = found.size();
    state.there = true;
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
