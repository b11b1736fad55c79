#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

/// The few things that POSIX systems and Windows do differently. Paths are UTF-8.
namespace base {
/// What tells one state of one file from another.
struct FileState
{
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< finest unit the system tells
    std::int64_t changed = 0;  ///< no program can set it back; 0 where the system does not tell
    std::uint64_t links = 1;
    bool regular = false;
    bool link = false; ///< only ever of what lies at a name itself

    bool operator==(const FileState& other) const;
    bool operator!=(const FileState& other) const { return !(*this == other); }
    /// Whether both are states of one file.
    bool isOf(const FileState& other) const { return device == other.device && inode == other.inode; }
    /// Whether no program wrote between the two states, as size and time tell. For files that may have been
    /// away from memory: not every disk gives a file the same number again.
    bool looksLike(const FileState& other) const
    {
        return size == other.size && modified == other.modified && link == other.link;
    }
    /// The same for one file; further names and other rights change nothing.
    bool hasContentOf(const FileState& other) const { return isOf(other) && looksLike(other); }
};

/// Follows links; false when there is no such file.
bool stateOf(const std::string& path, FileState& state);
bool stateOf(std::FILE* file, FileState& state);
/// Opens without blocking, but for the moment that the holder of a lease takes to let go; null with errno
/// set.
std::FILE* openFile(const std::string& path, bool writing);
/// The same for reading and writing the file at the path itself: a link there fails with ELOOP.
std::FILE* openNoLink(const std::string& path);
/// Reads or writes at a place without any buffer in between; the bytes done, fewer only at the end or on
/// failure.
std::size_t readAt(std::FILE* file, std::int64_t offset, void* bytes, std::size_t count);
std::size_t writeAt(std::FILE* file, std::int64_t offset, const void* bytes, std::size_t count);
/// Whether the bytes take no room on the disk: they are zeros. False also where the system does not tell.
bool isHole(std::FILE* file, std::int64_t offset, std::int64_t count);
/// Makes the bytes zeros that take no room, behind the end as well; false where that cannot be done.
bool makeHole(std::FILE* file, std::int64_t offset, std::int64_t count);
bool truncateTo(std::FILE* file, std::int64_t size);
bool syncToDevice(std::FILE* file);
/// The same for a file that was only written inside its old size: much faster, times may be lost.
bool syncBytesToDevice(std::FILE* file);
/// Takes the file for this process as long as it is open; false when another process has it.
bool lockFile(std::FILE* file);

/// Whether this user may read or write what lies behind all links; else errno says why not.
bool mayRead(const std::string& path);
bool mayWrite(const std::string& path);
/// The file behind all links; empty when there is none.
std::string realPath(const std::string& path);
void removeFile(const std::string& path);
} // namespace base
