#include "interposed.h"

#include <cerrno>
#include <ctime>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Interposed {
std::function<void()> beforeSync;
std::function<void()> beforeLock;
std::function<bool(int, off_t)> readFails;
std::function<ssize_t(size_t)> copiesInKernel;
std::function<bool()> writeFails;
std::function<int(const char*)> accessFails;
std::function<void(const char*)> beforeRemoval;
std::function<void(const char*)> beforeMove;
std::function<int()> linkFails;
std::function<void()> pauses;

Guard::~Guard()
{
    beforeSync = beforeLock = pauses = nullptr;
    beforeRemoval = beforeMove = nullptr;
    readFails = nullptr;
    copiesInKernel = nullptr;
    writeFails = nullptr;
    accessFails = nullptr;
    linkFails = nullptr;
}
} // namespace Interposed

extern "C" {
int fsync(int fd)
{
    struct stat status = {};
    if (Interposed::beforeSync && ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode))
        Interposed::beforeSync();
    return int(::syscall(SYS_fsync, fd));
}

int flock(int fd, int operation) noexcept
{
    if (Interposed::beforeLock)
        Interposed::beforeLock();
    return int(::syscall(SYS_flock, fd, operation));
}

int unlinkat(int folder, const char* name, int flags) noexcept
{
    if (Interposed::beforeRemoval)
        Interposed::beforeRemoval(name);
    return int(::syscall(SYS_unlinkat, folder, name, flags));
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept
{
    if (Interposed::beforeMove)
        Interposed::beforeMove(from);
    return int(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    if (const int reason = Interposed::linkFails ? Interposed::linkFails() : 0) {
        errno = reason;
        return -1;
    }
    return int(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
}

int usleep(useconds_t microseconds)
{
    if (Interposed::pauses) {
        Interposed::pauses();
        return 0;
    }
    const timespec pause = {time_t(microseconds / 1000000), long(microseconds % 1000000) * 1000};
    return ::nanosleep(&pause, nullptr);
}

ssize_t pread(int fd, void* bytes, size_t count, off_t offset)
{
    if (Interposed::readFails && Interposed::readFails(fd, offset)) {
        errno = EIO;
        return -1;
    }
    return ::syscall(SYS_pread64, fd, bytes, count, offset);
}

ssize_t pwrite(int fd, const void* bytes, size_t count, off_t offset)
{
    if (Interposed::writeFails && Interposed::writeFails()) {
        errno = ENOSPC;
        return -1;
    }
    return ::syscall(SYS_pwrite64, fd, bytes, count, offset);
}

int faccessat(int folder, const char* name, int mode, int flags) noexcept
{
    const int reason = Interposed::accessFails ? Interposed::accessFails(name) : 0;
    if (reason != 0) {
        errno = reason;
        return -1;
    }
    (void)flags; // the system's own call has none
    return int(::syscall(SYS_faccessat, folder, name, mode));
}

ssize_t copy_file_range(int from, off_t* in, int to, off_t* out, size_t count, unsigned flags)
{
    const ssize_t most = Interposed::copiesInKernel ? Interposed::copiesInKernel(count) : ssize_t(count);
    if (most < 0) {
        errno = EIO;
        return -1;
    }
    return ::syscall(SYS_copy_file_range, from, in, to, out, size_t(most), flags);
}
}
