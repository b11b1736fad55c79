#pragma once

#include "base/failure.h"
#include "base/newfile.h"

#include <string>

namespace itunes {
/// Keeps copies of the library file beside it: the very first one for good, and the last three versions that
/// a run's first change found. What is kept already is not kept once more, so that a run that changes nothing
/// pushes no version out. A broken file is no backup and takes no better one's place. Only one process at a
/// time, which holds the journal.
class LibraryBackup
{
public:
    enum class Result {
        Kept,
        Broken, ///< the library is: there is nothing to keep yet
        Failed
    };

    explicit LibraryBackup(const std::string& libraryPath) : m_library(libraryPath) {}

    /// In this state the file was read whole: it need not be looked through again.
    void knowWhole(const base::FileState& state) { m_whole = state; }
    /// What is not kept has a reason.
    Result keep(base::Failure& failure);
    /// Hands the copy to the device, which may take its time. Only after keep(), one call at a time, beside
    /// calls of the others.
    bool flush(base::Failure& failure);

private:
    std::string backup(int number) const;
    bool isWhole(const base::NewFile& copy, base::Failure& failure) const;
    std::string keptEqual(const base::NewFile& copy) const;
    bool keepOlder(base::Failure& failure) const;
    bool place(base::NewFile& copy, base::Failure& failure);
    bool rotate(base::Failure& failure) const;

    const std::string m_library;
    std::string m_kept; ///< the copy of this run; empty before there is one
    bool m_isFlushed = false;
    base::FileState m_whole;
    base::FileState m_broken;
    std::string m_brokenReason;
};
} // namespace itunes
