#include "base/platform.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

namespace fs = std::filesystem;

namespace {
fs::path nativePath(const std::string& utf8)
{
    return fs::u8path(utf8);
}

base::FileState stateFrom(const BY_HANDLE_FILE_INFORMATION& information)
{
    const auto joined = [](DWORD high, DWORD low) { return (std::uint64_t(high) << 32) | low; };
    base::FileState state;
    state.device = information.dwVolumeSerialNumber;
    state.inode = joined(information.nFileIndexHigh, information.nFileIndexLow);
    state.size = std::int64_t(joined(information.nFileSizeHigh, information.nFileSizeLow));
    state.modified = std::int64_t(
        joined(information.ftLastWriteTime.dwHighDateTime, information.ftLastWriteTime.dwLowDateTime));
    state.links = information.nNumberOfLinks;
    state.regular = !(information.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE));
    return state;
}

bool stateOfHandle(HANDLE handle, base::FileState& state)
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
} // namespace

bool base::FileState::operator==(const FileState& other) const
{
    return isOf(other) && size == other.size && modified == other.modified && changed == other.changed;
}

bool base::stateOf(const std::string& path, FileState& state)
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

bool base::stateOf(std::FILE* file, FileState& state)
{
    return stateOfHandle(handleOf(file), state);
}

std::FILE* base::openFile(const std::string& path, bool writing)
{
    return _wfsopen(nativePath(path).c_str(), writing ? L"r+bN" : L"rbN", _SH_DENYNO);
}

std::FILE* base::openNoLink(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(nativePath(path).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
        errno = ELOOP;
        return nullptr;
    }
    return openFile(path, true);
}

std::size_t base::readAt(std::FILE* file, std::int64_t offset, void* bytes, std::size_t count)
{
    OVERLAPPED place = placeOf(offset);
    DWORD done = 0;
    return ReadFile(handleOf(file), bytes, DWORD(count), &done, &place) ? done : 0;
}

std::size_t base::writeAt(std::FILE* file, std::int64_t offset, const void* bytes, std::size_t count)
{
    OVERLAPPED place = placeOf(offset);
    DWORD done = 0;
    return WriteFile(handleOf(file), bytes, DWORD(count), &done, &place) ? done : 0;
}

bool base::isHole(std::FILE*, std::int64_t, std::int64_t)
{
    return false;
}

bool base::makeHole(std::FILE*, std::int64_t, std::int64_t)
{
    return false;
}

bool base::truncateTo(std::FILE* file, std::int64_t size)
{
    return _chsize_s(_fileno(file), size) == 0;
}

bool base::syncToDevice(std::FILE* file)
{
    return FlushFileBuffers(handleOf(file)) != 0;
}

bool base::syncBytesToDevice(std::FILE* file)
{
    return syncToDevice(file);
}

bool base::lockFile(std::FILE* file)
{
    // A byte far behind everything that is read or written.
    OVERLAPPED place = placeOf(std::int64_t(1) << 62);
    return LockFileEx(handleOf(file), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) !=
           0;
}

bool base::mayRead(const std::string& path)
{
    return ::_waccess(nativePath(path).c_str(), 4) == 0;
}

bool base::mayWrite(const std::string& path)
{
    return ::_waccess(nativePath(path).c_str(), 2) == 0;
}

std::string base::realPath(const std::string& path)
{
    std::error_code failure;
    const fs::path real = fs::canonical(nativePath(path), failure);
    return failure ? std::string() : real.u8string();
}

void base::removeFile(const std::string& path)
{
    std::error_code failure;
    fs::remove(nativePath(path), failure);
}
