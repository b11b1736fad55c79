#include "base/filecopy_posix.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#ifdef __linux__
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#endif
#ifdef __APPLE__
#include <sys/acl.h>
#endif

namespace {
constexpr off_t bytesABlock = 512; // of st_blocks, everywhere

bool writeBlock(int to, const char* bytes, size_t count, off_t offset)
{
    for (size_t done = 0; done < count;) {
        const ssize_t put = ::pwrite(to, bytes + done, count - done, offset + off_t(done));
        if (put < 0 && errno != EINTR)
            return false;
        done += size_t(std::max<ssize_t>(put, 0));
    }
    return true;
}

bool copyByBlocks(int from, int to, off_t begin, off_t end, std::string& error)
{
    constexpr off_t largestBlock = off_t(256) * 1024;
    std::vector<char> block(size_t(std::min(largestBlock, end - begin)));
    while (begin < end) {
        const ssize_t got = ::pread(from, block.data(), std::min(block.size(), size_t(end - begin)), begin);
        if (got < 0 && errno == EINTR)
            continue;
        if (got == 0)
            error = "the file ends before its end";
        if (got <= 0 || !writeBlock(to, block.data(), size_t(got), begin))
            return false;
        begin += got;
    }
    return true;
}

bool copyRange(int from, int to, off_t begin, off_t end, std::string& error)
{
#ifdef __linux__
    while (begin < end) {
        off_t in = begin;
        off_t out = begin;
        const ssize_t copied = ::copy_file_range(from, &in, to, &out, size_t(end - begin), 0);
        if (copied <= 0)
            break; // not supported here, or a full disk: the plain copy goes on and tells
        begin += copied;
    }
#endif
    return begin >= end || copyByBlocks(from, to, begin, end, error);
}

bool copyAroundHoles(int from, int to, off_t size, std::string& error)
{
    for (off_t end = 0; end < size;) {
        off_t begin = ::lseek(from, end, SEEK_DATA);
        if (begin < 0 && errno == ENXIO)
            break; // a hole up to the end
        if (begin < 0)
            begin = end; // not told here: all is data
        end = ::lseek(from, begin, SEEK_HOLE);
        end = end < 0 ? size : std::min(end, size);
        if (!copyRange(from, to, begin, end, error))
            return false;
    }
    return ::ftruncate(to, size) == 0;
}

#ifdef __linux__
constexpr const char* accessList = "system.posix_acl_access";

bool copyAttribute(int from, int to, const char* name)
{
    const ssize_t length = ::fgetxattr(from, name, nullptr, 0);
    if (length < 0)
        return false;
    std::vector<char> value(size_t(length) + 1);
    const ssize_t read = ::fgetxattr(from, name, value.data(), value.size());
    return read >= 0 && ::fsetxattr(to, name, value.data(), size_t(read), 0) == 0;
}
#endif

/// False when the list of those who have access could not be kept.
bool copyAttributes(int from, int to, bool withAccess)
{
    bool kept = true;
#ifdef __linux__
    const ssize_t size = ::flistxattr(from, nullptr, 0);
    if (size <= 0)
        return true;
    std::vector<char> names(static_cast<size_t>(size));
    const ssize_t listed = ::flistxattr(from, names.data(), names.size());
    for (ssize_t at = 0; at < listed; at += ssize_t(std::strlen(&names[size_t(at)])) + 1) {
        const char* name = &names[size_t(at)];
        if (std::strcmp(name, accessList) != 0)
            copyAttribute(from, to, name);
        else
            kept = withAccess && copyAttribute(from, to, name);
    }
#else
    (void)from;
    (void)to;
    (void)withAccess;
#endif
    return kept;
}

bool groupBecomes(int made, const struct stat& status)
{
    if (::fchown(made, status.st_uid, status.st_gid) == 0 || ::fchown(made, uid_t(-1), status.st_gid) == 0)
        return true;
    struct stat now = {};
    return ::fstat(made, &now) == 0 && now.st_gid == status.st_gid;
}

/// Those of the old group are others now, and must not gain by it.
mode_t withoutGroup(mode_t mode)
{
    const mode_t group = (mode & S_IRWXG) >> 3;
    return mode & ~mode_t(S_IRWXG | S_ISGID) & ~(S_IRWXO & ~group);
}
} // namespace

bool base::copyContent(int from, const struct stat& status, int to, std::string& error)
{
#ifdef __linux__
    bool whole = ::ioctl(to, FICLONE, from) == 0;
#else
    bool whole = false;
#endif
    const off_t size = status.st_size;
    if (!whole)
        whole = status.st_blocks * bytesABlock < size ? copyAroundHoles(from, to, size, error)
                                                      : copyRange(from, to, 0, size, error);
    struct stat made = {};
    if (!whole || ::fstat(to, &made) != 0)
        return false;
    if (made.st_size != size)
        error = "the copy has another size";
    return made.st_size == size;
}

bool base::makePrivate(int made)
{
#ifdef __linux__
    if (::fremovexattr(made, accessList) != 0 && errno != ENODATA && errno != ENOTSUP)
        return false;
#endif
#ifdef __APPLE__
    if (const acl_t none = ::acl_init(0)) {
        ::acl_set_fd(made, none);
        ::acl_free(none);
    }
#endif
    return ::fchmod(made, S_IRUSR | S_IWUSR) == 0;
}

bool base::becomeLike(int original, const struct stat& status, int made)
{
    const bool groupKept = groupBecomes(made, status);
    // With an access list the group's bits are the most that anybody on the list has, without it the group's.
    const bool accessKept = copyAttributes(original, made, groupKept);
    mode_t mode = status.st_mode & 07777;
    if (!groupKept || !accessKept)
        mode = withoutGroup(mode);
    struct stat now = {};
    if (::fstat(made, &now) != 0)
        return false;
    if (now.st_uid != status.st_uid)
        mode &= ~mode_t(S_ISUID);
    return ::fchmod(made, mode) == 0;
}
