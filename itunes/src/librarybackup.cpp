#include "librarybackup.h"

#include "keptfile.h"
#include "libraryreading.h"
#include "librarywrite.h"

#include <algorithm>
#include <filesystem>
#include <vector>

using itunes::LibraryBackup;
namespace fs = std::filesystem;
namespace platform = audiocore::platform;

namespace {
constexpr const char* original = "original";
constexpr int versions = 3;

bool isFile(const std::string& path)
{
    std::error_code failure;
    return fs::symlink_status(fs::u8path(path), failure).type() == fs::file_type::regular;
}

bool holdTheSame(std::FILE* a, std::FILE* b)
{
    constexpr std::size_t block = 256 * 1024;
    std::vector<char> left(block);
    std::vector<char> right(block);
    for (std::int64_t at = 0;; at += block) {
        const std::size_t got = platform::readAt(a, at, left.data(), block);
        if (platform::readAt(b, at, right.data(), block) != got)
            return false;
        if (!std::equal(left.begin(), left.begin() + std::ptrdiff_t(got), right.begin()))
            return false;
        if (got < block)
            return true;
    }
}

bool holdTheSame(const std::string& a, const std::string& b)
{
    platform::FileState first;
    platform::FileState second;
    if (!isFile(b) || !platform::stateOf(a, first) || !platform::stateOf(b, second) ||
        first.size != second.size)
        return false;
    const itunes::File left(platform::openFile(a, false));
    const itunes::File right(platform::openFile(b, false));
    return left && right && holdTheSame(left.get(), right.get());
}

bool isLibrary(const std::string& path, std::string& error)
{
    const itunes::File file = itunes::openLibrary(path, error);
    itunes::LibraryVisitor nobody;
    return file && itunes::walkFile(file.get(), nobody, error);
}
} // namespace

/// The newest has the number 1.
std::string LibraryBackup::backup(int number) const
{
    const std::string name = m_library + ".melodrift-backup";
    return number == 1 ? name : name + '-' + std::to_string(number);
}

LibraryBackup::Result LibraryBackup::keep(std::string& error)
{
    if (!m_kept.empty())
        return Result::Kept;
    platform::FileState before;
    if (platform::stateOf(m_library, before) && before == m_broken) {
        error = m_brokenReason; // thousands of changes may ask
        return Result::Broken;
    }
    std::FILE* lockFile = nullptr;
    const std::string copy = platform::copyBeside(m_library, lockFile, error);
    const File lock(lockFile);
    if (copy.empty())
        return Result::Failed;
    if (!isWhole(copy, error)) {
        platform::removeFile(copy);
        m_broken = before;
        m_brokenReason = error;
        return Result::Broken;
    }
    if (place(copy, error))
        return Result::Kept;
    platform::removeFile(copy);
    return Result::Failed;
}

bool LibraryBackup::isWhole(const std::string& copy, std::string& error) const
{
    platform::FileState now;
    return (platform::stateOf(m_library, now) && now == m_whole) || isLibrary(copy, error);
}

/// The file beside the library that is the same already; empty for none.
std::string LibraryBackup::keptEqual(const std::string& copy) const
{
    std::vector<std::string> kept = keptFiles(m_library, original);
    for (int number = 1; number <= versions; ++number)
        kept.push_back(backup(number));
    for (const std::string& path : kept)
        if (holdTheSame(copy, path))
            return path;
    return std::string();
}

/// Makes the first version of a file that is older than the library; true when there is nothing to do.
bool LibraryBackup::keepOlder(std::string& error) const
{
    std::string reason;
    return !isFile(backup(1)) || !isLibrary(backup(1), reason) ||
           !keepFile(backup(1), m_library, original, error).empty();
}

bool LibraryBackup::place(const std::string& copy, std::string& error)
{
    if (keptFiles(m_library, original).empty() && !keepOlder(error))
        return false;
    if (keptFiles(m_library, original).empty()) {
        m_kept = keepCopy(copy, m_library, original, error);
        return !m_kept.empty();
    }
    m_kept = keptEqual(copy);
    if (!m_kept.empty()) {
        platform::removeFile(copy);
        return true;
    }
    if (!rotate(error) || !platform::replaceFile(copy, backup(1), error))
        return false;
    m_kept = backup(1);
    return true;
}

/// Makes the newest one's name free. A kill in between leaves a gap, which the next run closes first.
bool LibraryBackup::rotate(std::string& error) const
{
    int gap = 1;
    while (gap < versions && isFile(backup(gap)))
        ++gap;
    for (int number = gap - 1; number >= 1; --number)
        if (!platform::replaceFile(backup(number), backup(number + 1), error))
            return false;
    return true;
}

bool LibraryBackup::flush(std::string& error)
{
    if (!m_isFlushed) {
        const File kept(platform::openNoLink(m_kept));
        m_isFlushed = !kept || platform::syncToDevice(kept.get()); // the user may have removed it
    }
    if (!m_isFlushed)
        error = "the backup cannot be written";
    return m_isFlushed;
}
