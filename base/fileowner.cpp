#include "base/fileowner.h"

#ifdef _WIN32
#include "base/newfile.h"
#else
#include "base/descriptor_posix.h"

#include <cerrno>
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

bool base::isUsersAlone(std::FILE* file)
{
    (void)file;
    return true;
}

bool base::createPrivate(const std::string& path, const std::string& libraryPath, Failure& failure)
{
    return base::createLike(libraryPath, path, failure);
}

bool base::makePrivate(std::FILE* file)
{
    (void)file;
    return true;
}
#else
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

bool base::isUsersAlone(std::FILE* file)
{
    struct stat status = {};
    return ::fstat(::fileno(file), &status) == 0 && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool base::createPrivate(const std::string& path, const std::string& libraryPath, Failure& failure)
{
    const Descriptor made = createPrivateAt(AT_FDCWD, path, Inherited::Borne);
    if (!made.isOpen() && errno != EEXIST) {
        failure = systemFailure("no new file can be made in the folder: ");
        return false;
    }
    if (!made.isOpen())
        return true;
    struct stat library = {};
    // What root leaves behind belongs to whose library it is.
    if (::geteuid() == 0 && ::stat(libraryPath.c_str(), &library) == 0)
        (void)!::fchown(made.fd, library.st_uid, gid_t(-1));
    syncFolder(openFolderOf(path).fd);
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
