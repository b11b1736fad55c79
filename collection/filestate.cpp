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

FileState FileState::of(const std::string& path)
{
    base::FileState found;
    const bool exists = !path.empty() && base::stateOf(path, found);
    return stateFrom(found, exists && found.regular);
}

FileState FileState::ofEntry(const std::string& path)
{
    base::FileState found;
    const bool exists = !path.empty() && base::stateAt(AT_FDCWD, path, found);
    return exists ? entryState(found) : FileState();
}

FileState FileState::of(const QString& path)
{
    return of(QFile::encodeName(path).toStdString());
}

FileState FileState::ofEntry(const QString& path)
{
    return ofEntry(QFile::encodeName(path).toStdString());
}

QString removeIfUnchanged(const QString& path, const FileState& state)
{
    return removeIfUnchanged(QFile::encodeName(path).toStdString(), state);
}

QString removeIfUnchanged(const std::string& path, const FileState& state)
{
    const std::string name = base::nameOf(path);
    const base::Descriptor folder = base::openFolderOf(path);
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

FileState FileState::of(const std::string& path)
{
    return of(QFile::decodeName(path.c_str()));
}

FileState FileState::ofEntry(const std::string& path)
{
    return ofEntry(QFile::decodeName(path.c_str()));
}

QString removeIfUnchanged(const std::string& path, const FileState& state)
{
    return removeIfUnchanged(QFile::decodeName(path.c_str()), state);
}
#endif

QString whyNotAsLeft(const FileState& left, const FileState& now)
{
    if (!now.exists())
        return QStringLiteral("the file is gone");
    if (!left.exists() || !left.file.looksLike(now.file))
        return QStringLiteral("another program changed the file since");
    return QString();
}
