#include "platform.h"

#include <cerrno>
#include <filesystem>
#include <functional>
#include <system_error>

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

namespace platform = audiocore::platform;
namespace fs = std::filesystem;

namespace {
fs::path nativePath(const std::string& utf8)
{
    return fs::u8path(utf8);
}

std::string reason(const std::error_code& code = std::error_code(int(GetLastError()), std::system_category()))
{
    return code.message();
}

platform::FileState stateFrom(const BY_HANDLE_FILE_INFORMATION& information)
{
    const auto joined = [](DWORD high, DWORD low) { return (std::uint64_t(high) << 32) | low; };
    platform::FileState state;
    state.device = information.dwVolumeSerialNumber;
    state.inode = joined(information.nFileIndexHigh, information.nFileIndexLow);
    state.size = std::int64_t(joined(information.nFileSizeHigh, information.nFileSizeLow));
    state.modified = std::int64_t(
        joined(information.ftLastWriteTime.dwHighDateTime, information.ftLastWriteTime.dwLowDateTime));
    state.links = information.nNumberOfLinks;
    state.regular = !(information.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE));
    return state;
}

bool stateOfHandle(HANDLE handle, platform::FileState& state)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    if (handle == INVALID_HANDLE_VALUE || !GetFileInformationByHandle(handle, &information))
        return false;
    state = stateFrom(information);
    return true;
}

HANDLE handleOf(std::FILE* file)
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
}

OVERLAPPED placeOf(std::int64_t offset)
{
    OVERLAPPED place = {};
    place.Offset = DWORD(std::uint64_t(offset) & 0xFFFFFFFF);
    place.OffsetHigh = DWORD(std::uint64_t(offset) >> 32);
    return place;
}

/// What the temporary copies of a file start with. No name of music: a folder walk passes them over.
std::string temporaryPrefix(const fs::path& path)
{
    char hash[40];
    std::snprintf(hash, sizeof hash, ".melodrift-%016zx-",
                  std::hash<std::string>()(path.filename().u8string()));
    return hash;
}

bool mayReplace(const fs::path& target, std::string& error)
{
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_READONLY))
        return true;
    error = attributes == INVALID_FILE_ATTRIBUTES ? reason() : "the file is read-only";
    return false;
}

std::string makeBeside(const std::string& path, bool withContent, std::FILE*& lock, std::string& error)
{
    const fs::path target = nativePath(path);
    if (!mayReplace(target, error))
        return std::string();
    const fs::path made =
        target.parent_path() / fs::u8path(temporaryPrefix(target) + std::to_string(GetCurrentProcessId()) +
                                          "-" + std::to_string(GetTickCount64()));
    bool done = withContent && CopyFileW(target.c_str(), made.c_str(), TRUE);
    if (!withContent) {
        const HANDLE empty =
            CreateFileW(made.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        done = empty != INVALID_HANDLE_VALUE && CloseHandle(empty);
    }
    if (!done) {
        error = "no new file can be made in the folder: " + reason();
        return std::string();
    }
    // A file that is open cannot be deleted here, and one that is locked could not take the other's place.
    lock = nullptr;
    return made.u8string();
}
} // namespace

bool platform::FileState::operator==(const FileState& other) const
{
    return device == other.device && inode == other.inode && size == other.size && modified == other.modified;
}

bool platform::stateOf(const std::string& path, FileState& state)
{
    const HANDLE handle = CreateFileW(nativePath(path).c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    const bool found = stateOfHandle(handle, state);
    if (handle != INVALID_HANDLE_VALUE)
        CloseHandle(handle);
    if (!found)
        errno = ENOENT;
    return found;
}

bool platform::stateOf(std::FILE* file, FileState& state)
{
    return stateOfHandle(handleOf(file), state);
}

std::FILE* platform::openFile(const std::string& path, bool writing)
{
    return _wfsopen(nativePath(path).c_str(), writing ? L"r+bN" : L"rbN", _SH_DENYNO);
}

std::FILE* platform::openNoLink(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(nativePath(path).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
        errno = ELOOP;
        return nullptr;
    }
    return openFile(path, true);
}

std::size_t platform::readAt(std::FILE* file, std::int64_t offset, void* bytes, std::size_t count)
{
    OVERLAPPED place = placeOf(offset);
    DWORD done = 0;
    return ReadFile(handleOf(file), bytes, DWORD(count), &done, &place) ? done : 0;
}

std::size_t platform::writeAt(std::FILE* file, std::int64_t offset, const void* bytes, std::size_t count)
{
    OVERLAPPED place = placeOf(offset);
    DWORD done = 0;
    return WriteFile(handleOf(file), bytes, DWORD(count), &done, &place) ? done : 0;
}

bool platform::truncateTo(std::FILE* file, std::int64_t size)
{
    return _chsize_s(_fileno(file), size) == 0;
}

bool platform::syncToDevice(std::FILE* file)
{
    return FlushFileBuffers(handleOf(file)) != 0;
}

bool platform::syncBytesToDevice(std::FILE* file)
{
    return syncToDevice(file);
}

bool platform::lockFile(std::FILE* file)
{
    // A byte far behind everything that is read or written.
    OVERLAPPED place = placeOf(std::int64_t(1) << 62);
    return LockFileEx(handleOf(file), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) !=
           0;
}

std::string platform::realPath(const std::string& path)
{
    std::error_code failure;
    const fs::path real = fs::canonical(nativePath(path), failure);
    return failure ? std::string() : real.u8string();
}

void platform::removeLeftovers(const std::string& path)
{
    const fs::path target = nativePath(path);
    const std::string prefix = temporaryPrefix(target);
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(target.parent_path(), failure))
        if (entry.path().filename().u8string().compare(0, prefix.size(), prefix) == 0)
            fs::remove(entry.path(), failure); // fails while its writer has it open
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
    if (!mayReplace(nativePath(model), error))
        return false;
    const HANDLE made = CreateFileW(nativePath(path).c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (made != INVALID_HANDLE_VALUE)
        return CloseHandle(made);
    if (GetLastError() == ERROR_FILE_EXISTS)
        return true;
    error = "no new file can be made in the folder: " + reason();
    return false;
}

bool platform::replaceFile(const std::string& temporary, const std::string& path, std::string& error)
{
    // Replacing keeps more of the old file than moving does, but needs one.
    if (GetFileAttributesW(nativePath(path).c_str()) == INVALID_FILE_ATTRIBUTES &&
        MoveFileExW(nativePath(temporary).c_str(), nativePath(path).c_str(), MOVEFILE_WRITE_THROUGH))
        return true;
    if (ReplaceFileW(nativePath(path).c_str(), nativePath(temporary).c_str(), nullptr,
                     REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr))
        return true;
    error = reason();
    return false;
}

void platform::removeFile(const std::string& path)
{
    std::error_code failure;
    fs::remove(nativePath(path), failure);
}
