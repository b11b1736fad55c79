#pragma once

#include "delayedwork.h"
#include "journal.h"
#include "librarybackup.h"
#include "trackedit.h"
#include "trackstore.h"

#include <functional>
#include <memory>
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
    /// Writes from now on what an earlier run left.
    void prepare() { pending(); }
    /// The library with what its file does not hold yet; null with the reason when it cannot be read whole.
    std::unique_ptr<TrackStore> read(std::string& error);

    bool remove(std::uint64_t id);
    /// The edit counts if `between`, which runs when the journal has it safely, succeeds.
    bool edit(std::uint64_t id, const TrackEdit& edit, const std::function<bool()>& between);

private:
    TrackChanges pending();
    bool beginChange();
    void changed();
    void writeInBackground();
    bool writePending() noexcept;
    bool tryToWrite();
    void report(const std::string& error) const;

    const std::string m_path;
    std::mutex m_mutex; ///< for all below
    LibraryBackup m_backup;
    Journal m_journal;
    TrackChanges m_changes;
    unsigned m_revision = 0;       ///< counts the changes
    int m_failures = 0;            ///< of writings since the last change
    std::string m_reportedFailure; ///< of the last writing
    DelayedWork m_writing;
};
} // namespace itunes
