#pragma once

#include "delayedwork.h"
#include "journal.h"
#include "trackedit.h"

#include <functional>
#include <mutex>
#include <string>

namespace itunes {
/// Changes one library file without ever losing it: a change is in the journal when it is answered, and the
/// file is written whole once the changes pause. The first change keeps a copy of the file beside it. Calls
/// from any thread.
class LibraryFile
{
public:
    explicit LibraryFile(const std::string& path);
    /// Writes what is pending.
    ~LibraryFile();
    LibraryFile(const LibraryFile&) = delete;
    LibraryFile& operator=(const LibraryFile&) = delete;

    const std::string& path() const { return m_path; }
    /// What the file does not hold yet. Changes that an earlier run left are written from now on.
    TrackChanges pending();

    bool remove(std::uint64_t id);
    /// The edit counts if `between`, which runs when the journal has it safely, succeeds.
    bool edit(std::uint64_t id, const TrackEdit& edit, const std::function<bool()>& between);

private:
    bool beginChange();
    bool keepBackup(std::string& error);
    bool flushBackup(std::string& error);
    void changed();
    void writePending();
    void report(const std::string& error) const;

    const std::string m_path;
    const std::string m_backup;
    bool m_backupIsFlushed = false; ///< one writing goes on at a time, and only it asks
    std::mutex m_mutex;             ///< for all below
    Journal m_journal;
    TrackChanges m_changes;
    unsigned m_revision = 0; ///< counts the changes
    bool m_hasBackup = false;
    DelayedWork m_writing;
};
} // namespace itunes
