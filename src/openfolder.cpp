#include "openfolder.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {
constexpr int deepest = 32; ///< one descriptor is open for each level

bool isFolder(int parent, const dirent& entry)
{
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;
    struct stat state = {};
    return ::fstatat(parent, entry.d_name, &state, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(state.st_mode);
}
} // namespace

OpenFolder::OpenFolder(int parent, const char* name)
    : m_descriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC))
{
}

OpenFolder::~OpenFolder()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

OpenFolder& OpenFolder::operator=(OpenFolder&& other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

bool OpenFolder::isPrivate() const
{
    struct stat state = {};
    return ::fstat(m_descriptor, &state) == 0 && state.st_uid == ::geteuid() &&
           (state.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

bool OpenFolder::standsUnder(int parent, const char* name) const
{
    struct stat mine = {};
    struct stat named = {};
    return ::fstat(m_descriptor, &mine) == 0 && ::fstatat(parent, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           mine.st_dev == named.st_dev && mine.st_ino == named.st_ino;
}

bool OpenFolder::lock(bool* impossible) const
{
    const bool locked = ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0;
    if (impossible)
        *impossible = !locked && errno != EWOULDBLOCK;
    return locked;
}

std::vector<OpenFolder::Entry> OpenFolder::entries() const
{
    std::vector<Entry> found;
    // A descriptor of its own, since reading moves its place.
    const int reading = ::openat(m_descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(reading < 0 ? nullptr : ::fdopendir(reading),
                                                     ::closedir);
    if (!stream && reading >= 0)
        ::close(reading);
    while (const dirent* entry = stream ? ::readdir(stream.get()) : nullptr)
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            found.push_back({entry->d_name, isFolder(m_descriptor, *entry)});
    return found;
}

void OpenFolder::removeContents() const
{
    struct stat state = {};
    if (::fstat(m_descriptor, &state) == 0)
        removeContents(state.st_dev, 1);
}

void OpenFolder::removeContents(dev_t device, int depth) const
{
    for (const Entry& entry : entries()) {
        if (!entry.isFolder) {
            ::unlinkat(m_descriptor, entry.name.c_str(), 0);
            continue;
        }
        const OpenFolder inner(m_descriptor, entry.name.c_str());
        struct stat state = {};
        if (depth < deepest && inner.m_descriptor >= 0 && ::fstat(inner.m_descriptor, &state) == 0 &&
            state.st_dev == device)
            inner.removeContents(device, depth + 1);
        ::unlinkat(m_descriptor, entry.name.c_str(), AT_REMOVEDIR);
    }
}
