#pragma once

#include "base/failure.h"
#include "base/fileowner.h"
#include "library/journallines.h"
#include "library/journalrecord.h"
#include "library/libraryreading.h"
#include "library/trackedit.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace itunes {
/// Where the journal of a library file lies.
std::string journalOf(const std::string& libraryPath);

/// Keeps the changes that were answered but are not in the library file yet in a small file beside it, one
/// line each, behind a line that tells a journal from any other file. Only its owner may open it, and while
/// it is open no other process can take it; one that belongs to neither the user nor the library's owner is
/// not touched. A last line that was torn by a kill or a power cut is no change; for lines damaged before it
/// the journal is kept once more, and the log tells. Calls from one thread at a time.
class Journal
{
public:
    explicit Journal(const std::string& libraryPath);

    /// Whether an earlier run, or this one, left changes.
    bool exists() const;
    /// Opens the journal, or makes it; what it holds is merged into the content. False with the reason, and
    /// nothing in the content; whatever is no journal stays as it is.
    bool open(JournalContent& content, base::Failure& failure);
    bool isOpen() const { return bool(m_file); }
    /// Whether it does not take so many more changes, none of which is a long one.
    bool isFullFor(std::size_t changes) const;
    /// Whether the user's own processes wrote it.
    bool isTheUsers() const { return base::ownerOf(m_file.get(), m_library) == base::Owner::User; }

    /// Adds a change for good: it is on the disk when the call answers true. What is not added has a reason.
    /// Of the deletions all are, or none.
    bool addDeletions(const TrackSet& tracks, base::Failure& failure);
    /// The deletions of these tracks count no more: of all of them or, where the call fails, of none.
    bool addReturn(const std::vector<std::uint64_t>& ids, base::Failure& failure);
    /// Adds an edit that does not count before confirm(), which can only fail when the disk does.
    bool beginEdit(const JournalRecord& edit, base::Failure& failure);
    bool confirm();
    /// The edit was not made.
    bool cancel();

    /// Copies the journal to a name of its own and tells so in the log, with the reason.
    bool keepAside(const std::string& reason, base::Failure& failure) const;
    /// All changes are in the library file.
    void remove();

private:
    bool openOnce(base::Failure& failure);
    bool load(JournalContent& content, base::Failure& failure);
    bool take(const JournalLines& lines, JournalContent& content, base::Failure& failure);
    bool isTheFileAtItsPath() const;
    bool append(const JournalRecord& record, RecordState state, base::Failure& failure);
    bool append(const std::string& lines, std::size_t records, base::Failure& failure);
    bool mark(RecordState state);
    bool makeRoom(std::int64_t size);

    std::string m_library;
    std::string m_path;
    File m_file;
    std::int64_t m_end = 0;    ///< where the next line goes
    std::int64_t m_room = 0;   ///< the file's size; line feeds fill it
    std::int64_t m_begun = 0;  ///< the line of the last edit that was begun
    std::size_t m_records = 0; ///< those that failed included
};
} // namespace itunes
