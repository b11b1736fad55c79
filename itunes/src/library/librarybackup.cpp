#include "library/librarybackup.h"

#include "base/filebytes.h"
#include "base/keptfile.h"
#include "library/libraryreading.h"

#include <algorithm>
#include <filesystem>
#include <vector>

using itunes::LibraryBackup;
namespace fs = std::filesystem;
using base::Failure;
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

bool holdsLibrary(std::FILE* file, Failure& failure)
{
    itunes::LibraryVisitor nobody;
    return itunes::walkFile(base::SystemFile(file), nobody, failure);
}

/// What cannot be read at the moment may be whole.
bool isBroken(const std::string& path)
{
    Failure failure;
    const itunes::File file = itunes::openLibrary(path, failure);
    return file && !holdsLibrary(file.get(), failure) && failure.kind == Failure::Kind::NotSafe;
}
} // namespace

/// The newest has the number 1.
std::string LibraryBackup::backup(int number) const
{
    const std::string name = m_library + ".melodrift-backup";
    return number == 1 ? name : name + '-' + std::to_string(number);
}

LibraryBackup::Result LibraryBackup::keep(Failure& failure)
{
    if (!m_kept.empty())
        return Result::Kept;
    base::FileState before;
    if (base::stateOf(m_library, before) && before == m_broken) {
        failure = {m_brokenReason, Failure::Kind::NotSafe}; // thousands of changes may ask
        return Result::Broken;
    }
    const auto copy = NewFile::beside(m_library, NewFile::Content::Copied, failure);
    if (!copy)
        return Result::Failed;
    if (!isWhole(*copy, failure)) {
        if (failure.kind != Failure::Kind::NotSafe)
            return Result::Failed;
        m_broken = before;
        m_brokenReason = failure.text;
        return Result::Broken;
    }
    return place(*copy, failure) ? Result::Kept : Result::Failed;
}

bool LibraryBackup::isWhole(const NewFile& copy, Failure& failure) const
{
    return copy.original() == m_whole || holdsLibrary(copy.file(), failure);
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
bool LibraryBackup::keepOlder(Failure& failure) const
{
    if (!isFile(backup(1)) || isBroken(backup(1)) ||
        !base::keepFile(backup(1), m_library, original, failure).empty())
        return true;
    failure.text = "its former backup cannot be kept: " + failure.text;
    return false;
}

bool LibraryBackup::place(NewFile& copy, Failure& failure)
{
    if (base::keptFiles(m_library, original).empty() && !keepOlder(failure))
        return false;
    if (base::keptFiles(m_library, original).empty()) {
        m_kept = base::keepCopy(copy, m_library, original, failure);
        return !m_kept.empty();
    }
    m_kept = keptEqual(copy);
    if (!m_kept.empty())
        return true;
    if (!rotate(failure) || copy.takeName(backup(1), failure) != NewFile::Taking::Done)
        return false;
    m_kept = backup(1);
    return true;
}

/// Makes the newest one's name free. A kill in between leaves a gap, which the next run closes first.
bool LibraryBackup::rotate(Failure& failure) const
{
    int gap = 1;
    while (gap < versions && isFile(backup(gap)))
        ++gap;
    for (int number = gap - 1; number >= 1; --number)
        if (!base::renameFile(backup(number), backup(number + 1), failure))
            return false;
    return true;
}

bool LibraryBackup::flush(Failure& failure)
{
    if (!m_isFlushed) {
        const File kept(base::openNoLink(m_kept));
        m_isFlushed = !kept || base::syncToDevice(kept.get()); // the user may have removed it
    }
    if (!m_isFlushed)
        failure = {"the backup cannot be written"};
    return m_isFlushed;
}
