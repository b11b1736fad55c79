#include "base/fileowner.h"

#ifdef _WIN32
#include "base/platform.h"
#else
#include "base/filecopy_posix.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

using base::Owner;

#ifdef _WIN32
Owner base::ownerOf(std::FILE* file, const std::string& libraryPath)
{
    (void)file;
    (void)libraryPath;
    return Owner::User;
}

bool base::createPrivate(const std::string& path, const std::string& libraryPath, std::string& error)
{
    return base::createLike(libraryPath, path, error);
}

bool base::makePrivate(std::FILE* file)
{
    (void)file;
    return true;
}
#else
namespace {
/// A power cut must not take the new name away again.
void syncFolderOf(const std::string& path)
{
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const int opened = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0)
        return;
    (void)::fsync(opened);
    ::close(opened);
}
} // namespace

Owner base::ownerOf(std::FILE* file, const std::string& libraryPath)
{
    struct stat status = {};
    struct stat library = {};
    if (::fstat(::fileno(file), &status) != 0)
        return Owner::Other;
    if (status.st_uid == ::geteuid())
        return Owner::User;
    const bool same = ::stat(libraryPath.c_str(), &library) == 0 && status.st_uid == library.st_uid;
    return same ? Owner::LibraryOwner : Owner::Other;
}

bool base::createPrivate(const std::string& path, const std::string& libraryPath, std::string& error)
{
    constexpr mode_t ownersAlone = S_IRUSR | S_IWUSR;
    const int made = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownersAlone);
    if (made < 0 && errno != EEXIST) {
        error = std::string("no new file can be made in the folder: ") + std::strerror(errno);
        return false;
    }
    if (made < 0)
        return true;
    // Where the rights that the folder hands on cannot be taken away, the mode alone keeps others out.
    (void)base::makePrivate(made);
    struct stat library = {};
    // What root leaves behind belongs to whose library it is.
    if (::geteuid() == 0 && ::stat(libraryPath.c_str(), &library) == 0)
        (void)!::fchown(made, library.st_uid, gid_t(-1));
    ::close(made);
    syncFolderOf(path);
    return true;
}

bool base::makePrivate(std::FILE* file)
{
    struct stat status = {};
    if (::fstat(::fileno(file), &status) != 0)
        return false;
    const mode_t others = status.st_mode & (S_IRWXG | S_IRWXO);
    return others == 0 || ::fchmod(::fileno(file), S_IRUSR | S_IWUSR) == 0;
}
#endif
