#include "platform.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#ifdef __linux__
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#endif

namespace platform = audiocore::platform;

namespace {
constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;

struct Descriptor
{
    explicit Descriptor(int number) : fd(number) {}
    ~Descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int fd;
};

std::string folderOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

/// What the temporary copies of a file start with. No name of music: a folder walk passes them over.
std::string temporaryPrefix(const std::string& path)
{
    char hash[32];
    std::snprintf(hash, sizeof hash, ".melodrift-%016zx-",
                  std::hash<std::string>()(path.substr(folderOf(path).size())));
    return hash;
}

bool copyByBlocks(int from, int to)
{
    std::vector<char> block(256 * 1024);
    for (;;) {
        const ssize_t got = ::read(from, block.data(), block.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return got == 0;
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = ::write(to, block.data() + done, size_t(got - done));
            if (put < 0 && errno != EINTR)
                return false;
            done += std::max<ssize_t>(put, 0);
        }
    }
}

bool copyContent(int from, int to, off_t size)
{
#ifdef __linux__
    if (::ioctl(to, FICLONE, from) == 0)
        return true;
    off_t left = size;
    while (left > 0) {
        const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, size_t(left), 0);
        if (copied <= 0)
            break; // not supported here, or a full disk: the plain copy goes on and tells
        left -= copied;
    }
    if (left == 0)
        return true;
#else
    (void)size;
#endif
    return copyByBlocks(from, to);
}

void copyAttributes(int from, int to)
{
#ifdef __linux__
    const ssize_t size = ::flistxattr(from, nullptr, 0);
    if (size <= 0)
        return;
    std::vector<char> names(static_cast<size_t>(size));
    const ssize_t listed = ::flistxattr(from, names.data(), names.size());
    for (ssize_t at = 0; at < listed; at += ssize_t(std::strlen(&names[size_t(at)])) + 1) {
        const char* name = &names[size_t(at)];
        const ssize_t length = ::fgetxattr(from, name, nullptr, 0);
        if (length < 0)
            continue;
        std::vector<char> value(static_cast<size_t>(length) + 1);
        const ssize_t read = ::fgetxattr(from, name, value.data(), value.size());
        if (read >= 0)
            (void)!::fsetxattr(to, name, value.data(), size_t(read), 0);
    }
#else
    (void)from;
    (void)to;
#endif
}

platform::FileState stateFrom(const struct stat& status)
{
    platform::FileState state;
    state.device = status.st_dev;
    state.inode = status.st_ino;
    state.size = status.st_size;
#ifdef __APPLE__
    const timespec& modified = status.st_mtimespec;
#else
    const timespec& modified = status.st_mtim;
#endif
    state.modified = std::int64_t(modified.tv_sec) * 1000000000 + modified.tv_nsec;
    state.links = status.st_nlink;
    state.regular = S_ISREG(status.st_mode);
    return state;
}

std::string reason()
{
    return std::strerror(errno);
}

/// Root may write everywhere; a file or folder that nobody may write stays as it is all the same.
bool mayReplace(const std::string& path, const std::string& folder, std::string& error)
{
    struct stat file = {};
    struct stat directory = {};
    if (::stat(path.c_str(), &file) != 0 || ::stat(folder.c_str(), &directory) != 0) {
        error = reason();
        return false;
    }
    if (!(file.st_mode & anyWrite) || ::access(path.c_str(), W_OK) != 0) {
        error = "the file is read-only";
        return false;
    }
    if (!(directory.st_mode & anyWrite) || ::access(folder.c_str(), W_OK) != 0) {
        error = "the folder is read-only";
        return false;
    }
    return true;
}

/// Owner, mode and attributes of the original. Without the right to give files away the new one stays this
/// user's.
bool becomeLike(int original, const struct stat& status, int made)
{
    if (::fchmod(made, status.st_mode & 07777) != 0)
        return false;
    if (::fchown(made, status.st_uid, status.st_gid) != 0)
        (void)!::fchown(made, uid_t(-1), status.st_gid);
    copyAttributes(original, made);
    return true;
}

void syncFolderOf(const std::string& path)
{
    const Descriptor folder(::open(folderOf(path).c_str(), O_RDONLY | O_CLOEXEC));
    if (folder.fd >= 0)
        ::fsync(folder.fd);
}

std::FILE* openWith(const std::string& path, int flags)
{
    const int fd = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return nullptr;
    std::FILE* file = ::fdopen(fd, (flags & O_ACCMODE) == O_RDWR ? "r+b" : "rb");
    if (!file)
        ::close(fd);
    return file;
}

std::string makeBeside(const std::string& path, bool withContent, std::FILE*& lock, std::string& error)
{
    const std::string folder = folderOf(path);
    if (!mayReplace(path, folder, error))
        return std::string();

    const Descriptor original(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (original.fd < 0 || ::fstat(original.fd, &status) != 0) {
        error = reason();
        return std::string();
    }
    std::string temporary = folder + temporaryPrefix(path) + "XXXXXX";
    const int made = ::mkstemp(temporary.data());
    if (made < 0) {
        error = "no new file can be made in the folder: " + reason();
        return std::string();
    }
    lock = ::fdopen(made, "r+b");
    ::flock(made, LOCK_EX | LOCK_NB);
    const bool whole = !withContent || copyContent(original.fd, made, status.st_size);
    if (!whole || !becomeLike(original.fd, status, made)) {
        error = "the new file cannot be written: " + reason();
        std::fclose(lock);
        lock = nullptr;
        ::unlink(temporary.c_str());
        return std::string();
    }
    return temporary;
}
} // namespace

bool platform::FileState::operator==(const FileState& other) const
{
    return device == other.device && inode == other.inode && size == other.size && modified == other.modified;
}

bool platform::stateOf(const std::string& path, FileState& state)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return false;
    state = stateFrom(status);
    return true;
}

bool platform::stateOf(std::FILE* file, FileState& state)
{
    struct stat status = {};
    if (::fstat(::fileno(file), &status) != 0)
        return false;
    state = stateFrom(status);
    return true;
}

std::FILE* platform::openFile(const std::string& path, bool writing)
{
    return openWith(path, writing ? O_RDWR : O_RDONLY);
}

std::FILE* platform::openNoLink(const std::string& path)
{
    return openWith(path, O_RDWR | O_NOFOLLOW);
}

std::size_t platform::readAt(std::FILE* file, std::int64_t offset, void* bytes, std::size_t count)
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

std::size_t platform::writeAt(std::FILE* file, std::int64_t offset, const void* bytes, std::size_t count)
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

bool platform::truncateTo(std::FILE* file, std::int64_t size)
{
    return ::ftruncate(::fileno(file), off_t(size)) == 0;
}

bool platform::syncToDevice(std::FILE* file)
{
    return ::fsync(::fileno(file)) == 0;
}

bool platform::syncBytesToDevice(std::FILE* file)
{
#ifdef __linux__
    return ::fdatasync(::fileno(file)) == 0;
#else
    return syncToDevice(file);
#endif
}

bool platform::lockFile(std::FILE* file)
{
    return ::flock(::fileno(file), LOCK_EX | LOCK_NB) == 0;
}

std::string platform::realPath(const std::string& path)
{
    const std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
    return real ? std::string(real.get()) : std::string();
}

void platform::removeLeftovers(const std::string& path)
{
    const std::string folder = folderOf(path);
    const std::string prefix = temporaryPrefix(path);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.c_str()), ::closedir);
    if (!entries)
        return;
    while (const dirent* entry = ::readdir(entries.get())) {
        if (std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) != 0)
            continue;
        const std::string copy = folder + entry->d_name;
        // A living writer holds a lock on its copy.
        const Descriptor file(::open(copy.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (file.fd >= 0 && ::flock(file.fd, LOCK_EX | LOCK_NB) == 0)
            ::unlink(copy.c_str());
    }
}

std::string platform::copyBeside(const std::string& path, std::FILE*& lock, std::string& error)
{
    return makeBeside(path, true, lock, error);
}

std::string platform::newBeside(const std::string& path, std::FILE*& lock, std::string& error)
{
    return makeBeside(path, false, lock, error);
}

bool platform::createLike(const std::string& model, const std::string& path, std::string& error)
{
    if (!mayReplace(model, folderOf(model), error))
        return false;
    const Descriptor original(::open(model.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (original.fd < 0 || ::fstat(original.fd, &status) != 0) {
        error = reason();
        return false;
    }
    const Descriptor made(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (made.fd < 0 && errno != EEXIST) {
        error = "no new file can be made in the folder: " + reason();
        return false;
    }
    if (made.fd >= 0) {
        becomeLike(original.fd, status, made.fd); // where it cannot, the file is this user's alone
        syncFolderOf(path);
    }
    return true;
}

bool platform::replaceFile(const std::string& temporary, const std::string& path, std::string& error)
{
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        error = reason();
        return false;
    }
    syncFolderOf(path);
    return true;
}

void platform::removeFile(const std::string& path)
{
    ::unlink(path.c_str());
}
