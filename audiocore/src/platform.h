#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

/// The few things that POSIX systems and Windows do differently. Paths are UTF-8.
namespace audiocore::platform {
/// What tells one state of one file from another.
struct FileState
{
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< finest unit the system tells
    std::uint64_t links = 1;
    bool regular = false;

    bool operator==(const FileState& other) const;
};

/// Follows links; false when there is no such file.
bool stateOf(const std::string& path, FileState& state);
bool stateOf(std::FILE* file, FileState& state);
/// Opens without ever blocking; null with errno set.
std::FILE* openFile(const std::string& path, bool writing);
/// The same for reading and writing the file at the path itself: a link there fails with ELOOP.
std::FILE* openNoLink(const std::string& path);
/// Reads or writes at a place without any buffer in between; the bytes done, fewer only at the end or on
/// failure.
std::size_t readAt(std::FILE* file, std::int64_t offset, void* bytes, std::size_t count);
std::size_t writeAt(std::FILE* file, std::int64_t offset, const void* bytes, std::size_t count);
bool truncateTo(std::FILE* file, std::int64_t size);
bool syncToDevice(std::FILE* file);
/// The same for a file that was only written inside its old size: much faster, times may be lost.
bool syncBytesToDevice(std::FILE* file);
/// Takes the file for this process as long as it is open; false when another process has it.
bool lockFile(std::FILE* file);

/// The file behind all links; empty when there is none.
std::string realPath(const std::string& path);

/// Removes the copies that killed writers of the file left beside it; those of living writers stay.
void removeLeftovers(const std::string& path);
/// Makes a new file beside `path` that holds a copy of it, owner and mode included, and keeps it locked while
/// `lock` is open. The new file's path; empty on failure with the reason in `error`.
std::string copyBeside(const std::string& path, std::FILE*& lock, std::string& error);
/// The same without the content.
std::string newBeside(const std::string& path, std::FILE*& lock, std::string& error);
/// Makes an empty file with owner and mode of `model` unless there is something at the path, a link included;
/// that stays as it is. False with the reason in `error` when there is nothing afterwards.
bool createLike(const std::string& model, const std::string& path, std::string& error);
/// Puts the complete file `temporary` in the place of `path` at one stroke; false with the reason in `error`.
bool replaceFile(const std::string& temporary, const std::string& path, std::string& error);
void removeFile(const std::string& path);
} // namespace audiocore::platform
