#include "librarybackup.h"

#include "libraryreading.h"
#include "librarywrite.h"

using itunes::LibraryBackup;
namespace platform = audiocore::platform;
using platform::NewFile;

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
    const auto copy = NewFile::beside(m_library, NewFile::Content::Copied, error);
    if (!copy)
        return Result::Failed;
    if (!isWhole(*copy, error)) {
        m_broken = before;
        m_brokenReason = error;
        return Result::Broken;
    }
    m_isKept = copy->takeName(m_path, error) == NewFile::Taking::Done;
    return m_isKept ? Result::Kept : Result::Failed;
}

bool LibraryBackup::isWhole(const NewFile& copy, std::string& error) const
{
    if (copy.original() == m_whole)
        return true;
    LibraryVisitor nobody;
    return walkFile(copy.file(), nobody, error);
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
