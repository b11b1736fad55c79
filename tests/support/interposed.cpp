#include "interposed.h"

#include <cerrno>
#include <cstdarg>
#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Interposed {
Step<void()> beforeSync;
Step<void()> beforeLock;
Step<bool(int, off_t)> readFails;
Step<ssize_t(size_t)> copiesInKernel;
Step<bool()> writeFails;
Step<int(const char*)> accessFails;
Step<int()> makingFails;
Step<void(const char*)> beforeRemoval;
Step<void(const char*)> beforeMove;
Step<int()> linkFails;
Step<void()> pauses;

Guard::~Guard()
{
    beforeSync = nullptr;
    beforeLock = nullptr;
    pauses = nullptr;
    beforeRemoval = nullptr;
    beforeMove = nullptr;
    readFails = nullptr;
    copiesInKernel = nullptr;
    writeFails = nullptr;
    accessFails = nullptr;
    makingFails = nullptr;
    linkFails = nullptr;
}
} // namespace Interposed

extern "C" {
int fsync(int fd)
{
    struct stat status = {};
    const auto step = Interposed::beforeSync.get();
    if (step && ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode))
        step();
    return int(::syscall(SYS_fsync, fd));
}

int flock(int fd, int operation) noexcept
{
    if (const auto step = Interposed::beforeLock.get())
        step();
    return int(::syscall(SYS_flock, fd, operation));
}

int unlinkat(int folder, const char* name, int flags) noexcept
{
    if (const auto step = Interposed::beforeRemoval.get())
        step(name);
    return int(::syscall(SYS_unlinkat, folder, name, flags));
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept
{
    if (const auto step = Interposed::beforeMove.get())
        step(from);
    return int(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    const auto step = Interposed::linkFails.get();
    if (const int reason = step ? step() : 0) {
        errno = reason;
        return -1;
    }
    return int(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
}

int usleep(useconds_t microseconds)
{
    if (const auto step = Interposed::pauses.get()) {
        step();
        return 0;
    }
    const timespec pause = {time_t(microseconds / 1000000), long(microseconds % 1000000) * 1000};
    return ::nanosleep(&pause, nullptr);
}

ssize_t pread(int fd, void* bytes, size_t count, off_t offset)
{
    const auto step = Interposed::readFails.get();
    if (step && step(fd, offset)) {
        errno = EIO;
        return -1;
    }
    return ::syscall(SYS_pread64, fd, bytes, count, offset);
}

ssize_t pwrite(int fd, const void* bytes, size_t count, off_t offset)
{
    const auto step = Interposed::writeFails.get();
    if (step && step()) {
        errno = ENOSPC;
        return -1;
    }
    return ::syscall(SYS_pwrite64, fd, bytes, count, offset);
}

int faccessat(int folder, const char* name, int mode, int flags) noexcept
{
    const auto step = Interposed::accessFails.get();
    const int reason = step ? step(name) : 0;
    if (reason != 0) {
        errno = reason;
        return -1;
    }
    (void)flags; // the system's own call has none
    return int(::syscall(SYS_faccessat, folder, name, mode));
}

int openat(int folder, const char* name, int flags, ...)
{
    va_list further;
    va_start(further, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(further, mode_t) : 0;
    va_end(further);
    const auto step = Interposed::makingFails.get();
    const int reason = step && flags & O_CREAT ? step() : 0;
    if (reason != 0) {
        errno = reason;
        return -1;
    }
    return int(::syscall(SYS_openat, folder, name, flags, mode));
}

ssize_t copy_file_range(int from, off_t* in, int to, off_t* out, size_t count, unsigned flags)
{
    const auto step = Interposed::copiesInKernel.get();
    const ssize_t most = step ? step(count) : ssize_t(count);
    if (most < 0) {
        errno = EIO;
        return -1;
    }
    return ::syscall(SYS_copy_file_range, from, in, to, out, size_t(most), flags);
}
}
