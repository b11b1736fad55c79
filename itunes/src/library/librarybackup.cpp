#include "library/librarybackup.h"

#include "base/filebytes.h"
#include "base/keptfile.h"
#include "library/libraryreading.h"

#include <algorithm>
#include <filesystem>
#include <vector>

using itunes::LibraryBackup;
namespace fs = std::filesystem;
using base::NewFile;

namespace {
constexpr const char* original = "original";
constexpr int versions = 3;

bool isFile(const std::string& path)
{
    std::error_code failure;
    return fs::symlink_status(fs::u8path(path), failure).type() == fs::file_type::regular;
}

/// Two files of that size.
bool holdTheSame(std::FILE* a, std::FILE* b, std::int64_t size)
{
    constexpr std::int64_t block = 256 * 1024;
    std::vector<char> left(block);
    std::vector<char> right(block);
    for (std::int64_t at = 0; at < size; at += block) {
        const std::size_t count = std::size_t(std::min<std::int64_t>(block, size - at));
        if (base::readAt(a, at, left.data(), count) != count ||
            base::readAt(b, at, right.data(), count) != count ||
            !std::equal(left.begin(), left.begin() + std::ptrdiff_t(count), right.begin()))
            return false;
    }
    return true;
}

bool isCopyAt(std::FILE* copy, const std::string& path)
{
    const itunes::File file(isFile(path) ? base::openFile(path, false) : nullptr);
    base::FileState first;
    base::FileState second;
    return file && base::stateOf(copy, first) && base::stateOf(file.get(), second) &&
           first.size == second.size && holdTheSame(copy, file.get(), first.size);
}

bool holdsLibrary(std::FILE* file, std::string& error)
{
    itunes::LibraryVisitor nobody;
    return itunes::walkFile(base::SystemFile(file), nobody, error);
}

bool isLibrary(const std::string& path, std::string& error)
{
    const itunes::File file = itunes::openLibrary(path, error);
    return file && holdsLibrary(file.get(), error);
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
    base::FileState before;
    if (base::stateOf(m_library, before) && before == m_broken) {
        error = m_brokenReason; // thousands of changes may ask
        return Result::Broken;
    }
    const auto copy = NewFile::beside(m_library, NewFile::Content::Copied, error);
    if (!copy)
        return Result::Failed;
    if (!isWhole(*copy, error)) {
        m_broken = before;
        m_brokenReason = error;
        return Result::Broken;
    }
    return place(*copy, error) ? Result::Kept : Result::Failed;
}

bool LibraryBackup::isWhole(const NewFile& copy, std::string& error) const
{
    return copy.original() == m_whole || holdsLibrary(copy.file(), error);
}

/// The file beside the library that is the same already; empty for none.
std::string LibraryBackup::keptEqual(const NewFile& copy) const
{
    std::vector<std::string> kept = base::keptFiles(m_library, original);
    for (int number = 1; number <= versions; ++number)
        kept.push_back(backup(number));
    for (const std::string& path : kept)
        if (isCopyAt(copy.file(), path))
            return path;
    return std::string();
}

/// Makes the first version of a file that is older than the library; true when there is nothing to do.
bool LibraryBackup::keepOlder(std::string& error) const
{
    std::string reason;
    return !isFile(backup(1)) || !isLibrary(backup(1), reason) ||
           !base::keepFile(backup(1), m_library, original, error).empty();
}

bool LibraryBackup::place(NewFile& copy, std::string& error)
{
    if (base::keptFiles(m_library, original).empty() && !keepOlder(error))
        return false;
    if (base::keptFiles(m_library, original).empty()) {
        m_kept = base::keepCopy(copy, m_library, original, error);
        return !m_kept.empty();
    }
    m_kept = keptEqual(copy);
    if (!m_kept.empty())
        return true;
    if (!rotate(error) || copy.takeName(backup(1), error) != NewFile::Taking::Done)
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
        if (!base::renameFile(backup(number), backup(number + 1), error))
            return false;
    return true;
}

bool LibraryBackup::flush(std::string& error)
{
    if (!m_isFlushed) {
        const File kept(base::openNoLink(m_kept));
        m_isFlushed = !kept || base::syncToDevice(kept.get()); // the user may have removed it
    }
    if (!m_isFlushed)
        error = "the backup cannot be written";
    return m_isFlushed;
}
