#include "base/platform.h"

#include "base/descriptor_posix.h"
#include "base/filecopy_posix.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int leaseTries = 50;
constexpr useconds_t leasePause = 10000;

std::FILE* openWith(const std::string& path, int flags)
{
    const int fd = base::openAt(AT_FDCWD, path, flags);
    if (fd < 0)
        return nullptr;
    std::FILE* file = ::fdopen(fd, (flags & O_ACCMODE) == O_RDWR ? "r+b" : "rb");
    if (!file)
        ::close(fd);
    return file;
}

std::int64_t nanoseconds(const timespec& time)
{
    return std::int64_t(time.tv_sec) * 1000000000 + time.tv_nsec;
}
} // namespace

base::Descriptor::~Descriptor()
{
    if (fd >= 0)
        ::close(fd);
}

int base::openAt(int folder, const std::string& name, int flags, mode_t mode)
{
    for (int i = 1;; ++i) {
        const int fd = ::openat(folder, name.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, mode);
        if (fd >= 0 || errno != EWOULDBLOCK || i == leaseTries)
            return fd;
        ::usleep(leasePause);
    }
}

base::Descriptor base::createPrivateAt(int folder, const std::string& name, Inherited rights)
{
    Descriptor made(openAt(folder, name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!made.isOpen() || makePrivate(made.fd) || rights == Inherited::Borne)
        return made;
    const int failure = errno;
    ::unlinkat(folder, name.c_str(), 0);
    errno = failure;
    return Descriptor();
}

void base::syncFolder(int folder)
{
    if (folder >= 0)
        (void)::fsync(folder);
}

std::string base::folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

std::string base::nameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1); // npos + 1 is the beginning
}

base::Descriptor base::openFolderOf(const std::string& path)
{
    const std::string folder = folderOf(path);
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
#ifdef O_PATH
    if (fd < 0 && errno == EACCES) // names may be used there, but not listed
        return Descriptor(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
#endif
    return Descriptor(fd);
}

base::FileState base::stateFrom(const struct stat& status)
{
    FileState state;
    state.device = status.st_dev;
    state.inode = status.st_ino;
    state.size = status.st_size;
#ifdef __APPLE__
    state.modified = nanoseconds(status.st_mtimespec);
    state.changed = nanoseconds(status.st_ctimespec);
#else
    state.modified = nanoseconds(status.st_mtim);
    state.changed = nanoseconds(status.st_ctim);
#endif
    state.links = status.st_nlink;
    state.regular = S_ISREG(status.st_mode);
    state.link = S_ISLNK(status.st_mode);
    return state;
}

bool base::stateAt(int folder, const std::string& name, FileState& state)
{
    struct stat status = {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    state = stateFrom(status);
    return true;
}

bool base::FileState::operator==(const FileState& other) const
{
    return isOf(other) && size == other.size && modified == other.modified && changed == other.changed;
}

bool base::stateOf(const std::string& path, FileState& state)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return false;
    state = stateFrom(status);
    return true;
}

bool base::stateOf(std::FILE* file, FileState& state)
{
    struct stat status = {};
    if (::fstat(::fileno(file), &status) != 0)
        return false;
    state = stateFrom(status);
    return true;
}

std::FILE* base::openFile(const std::string& path, bool writing)
{
    return openWith(path, writing ? O_RDWR : O_RDONLY);
}

std::FILE* base::openNoLink(const std::string& path)
{
    return openWith(path, O_RDWR | O_NOFOLLOW);
}

std::size_t base::readAt(std::FILE* file, std::int64_t offset, void* bytes, std::size_t count)
{
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = ::pread(::fileno(file), static_cast<char*>(bytes) + done, count - done,
                                    off_t(offset) + off_t(done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += std::size_t(got);
    }
    return done;
}

std::size_t base::writeAt(std::FILE* file, std::int64_t offset, const void* bytes, std::size_t count)
{
    std::size_t done = 0;
    while (done < count) {
        const ssize_t put = ::pwrite(::fileno(file), static_cast<const char*>(bytes) + done, count - done,
                                     off_t(offset) + off_t(done));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            break;
        done += std::size_t(put);
    }
    return done;
}

bool base::isHole(std::FILE* file, std::int64_t offset, std::int64_t count)
{
#ifdef SEEK_DATA
    const off_t data = ::lseek(::fileno(file), off_t(offset), SEEK_DATA);
    return data < 0 ? errno == ENXIO : data >= off_t(offset + count);
#else
    (void)file;
    (void)offset;
    (void)count;
    return false;
#endif
}

bool base::makeHole(std::FILE* file, std::int64_t offset, std::int64_t count)
{
#ifdef __linux__
    const int fd = ::fileno(file);
    struct stat status = {};
    if (::fstat(fd, &status) != 0)
        return false;
    const off_t end = off_t(offset + count);
    if (end > status.st_size && ::ftruncate(fd, end) != 0)
        return false;
    return ::fallocate(fd, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, off_t(offset), off_t(count)) == 0;
#else
    (void)file;
    (void)offset;
    (void)count;
    return false;
#endif
}

bool base::truncateTo(std::FILE* file, std::int64_t size)
{
    return ::ftruncate(::fileno(file), off_t(size)) == 0;
}

bool base::syncToDevice(std::FILE* file)
{
    return ::fsync(::fileno(file)) == 0;
}

bool base::syncBytesToDevice(std::FILE* file)
{
#ifdef __linux__
    return ::fdatasync(::fileno(file)) == 0;
#else
    return syncToDevice(file);
#endif
}

bool base::lockFile(std::FILE* file)
{
    return ::flock(::fileno(file), LOCK_EX | LOCK_NB) == 0;
}

bool base::mayRead(const std::string& path)
{
    return ::access(path.c_str(), R_OK) == 0;
}

bool base::mayWrite(const std::string& path)
{
    return ::access(path.c_str(), W_OK) == 0;
}

std::string base::realPath(const std::string& path)
{
    const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
    return real ? std::string(real.get()) : std::string();
}

void base::removeFile(const std::string& path)
{
    ::unlink(path.c_str());
}
