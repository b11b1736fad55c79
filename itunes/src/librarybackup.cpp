#include "librarybackup.h"

#include "libraryreading.h"
#include "librarywrite.h"

using itunes::LibraryBackup;
namespace platform = audiocore::platform;

LibraryBackup::LibraryBackup(const std::string& libraryPath)
    : m_library(libraryPath), m_path(libraryPath + ".melodrift-backup")
{
}

LibraryBackup::Result LibraryBackup::keep(std::string& error)
{
    if (m_isKept)
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
    m_isKept = platform::replaceFile(copy, m_path, error);
    if (!m_isKept)
        platform::removeFile(copy);
    return m_isKept ? Result::Kept : Result::Failed;
}

bool LibraryBackup::isWhole(const std::string& copy, std::string& error) const
{
    platform::FileState now;
    if (platform::stateOf(m_library, now) && now == m_whole)
        return true;
    const File file = openLibrary(copy, error);
    LibraryVisitor nobody;
    return file && walkFile(file.get(), nobody, error);
}

bool LibraryBackup::flush(std::string& error)
{
    if (!m_isFlushed) {
        const File backup(platform::openNoLink(m_path));
        m_isFlushed = !backup || platform::syncToDevice(backup.get()); // the user may have removed it
    }
    if (!m_isFlushed)
        error = "the backup cannot be written";
    return m_isFlushed;
}
