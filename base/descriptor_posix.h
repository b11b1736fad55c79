#pragma once

#include <string>
#include <utility>

#include <sys/types.h>

struct stat;

namespace base {
struct FileState;

/// Closes what it holds.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : fd(number) {}
    Descriptor(Descriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(fd, other.fd);
        return *this;
    }
    ~Descriptor();

    bool isOpen() const { return fd >= 0; }

    int fd;
};

/// As openat() does, without ever blocking for long: a lease on the file is waited for, but not for ever.
int openAt(int folder, const std::string& name, int flags, mode_t mode = 0);
/// Whether a new file may have further rights that its folder hands on and the system does not let go of:
/// then its mode alone keeps others out.
enum class Inherited { Refused, Borne };
/// Makes a file that nobody but its owner can open; -1 with errno set, EEXIST when there is something at the
/// name, a link included.
Descriptor createPrivateAt(int folder, const std::string& name, Inherited rights);
/// A power cut must not take away what was named, renamed or removed in the folder. Nothing for -1.
void syncFolder(int folder);
/// The folder of a path, for finding files in it; -1 with errno set.
Descriptor openFolderOf(const std::string& path);
/// The path up to its last step, with the slash; "./" when there is no other.
std::string folderOf(const std::string& path);
/// The last step of the path.
std::string nameOf(const std::string& path);

FileState stateFrom(const struct stat& status);
/// Of what lies at the name itself.
bool stateAt(int folder, const std::string& name, FileState& state);
} // namespace base
