#pragma once

#include "base/failure.h"
#include "library/delayedwork.h"
#include "library/editresult.h"
#include "library/journal.h"
#include "library/librarybackup.h"
#include "library/libraryreading.h"
#include "library/librarysplices.h"
#include "library/librarywrite.h"
#include "library/takenpieces.h"
#include "library/takentracks.h"
#include "library/trackedit.h"
#include "library/trackstore.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace itunes {
/// Changes one library file without ever losing it: a change is in the journal when it is answered, and the
/// file is written whole once the changes pause. The journal goes when what it holds stands in the library
/// and the media files; whatever cannot come there is kept aside with it. The first change keeps a copy of
/// the file beside it. Calls from any thread.
class LibraryFile
{
public:
    explicit LibraryFile(const std::string& path);
    /// Writes what is pending.
    ~LibraryFile();
    LibraryFile(const LibraryFile&) = delete;
    LibraryFile& operator=(const LibraryFile&) = delete;

    const std::string& path() const { return m_path; }
    /// Reads and writes in the background what an earlier run left.
    void prepare();
    /// The library with what its file does not hold yet; null with the reason when it cannot be read whole.
    std::unique_ptr<TrackStore> read(ReadingFailure& failure);

    /// Of all of these tracks or, where it is refused, of none. As many as there are at one stroke.
    iTunesEditProblem remove(const TrackSet& tracks);
    /// The edit counts if `writeMedia`, which runs when the journal has it safely, succeeds. An edit of a
    /// track that is no longer in the file is refused before that, and a reversal where somebody else wrote
    /// the file since it was read.
    iTunesEditProblem edit(const JournalRecord& edit, const std::function<bool()>& writeMedia);

    /// Takes the deletions of these tracks back, of all or of none. Those that wait leave the journal; what
    /// was taken out of the file goes back into it before the answer, unless somebody else wrote the file
    /// since.
    iTunesEditProblem bringBack(const TrackSet& tracks);
    /// That is kept for it, in bytes.
    std::size_t bytesKept();

    enum class Taking {
        Done,
        Refused, ///< nothing was changed
        Waits    ///< the journal has it, the file has not
    };
    /// Told, before anything is changed, what brings the tracks back; false refuses it, with the reason.
    using Announce = std::function<bool(const TakenTracks& taken, base::Failure& failure)>;
    /// Takes these tracks out, all of them or none, and writes the file before it answers.
    Taking take(const TrackSet& tracks, const Announce& announce, base::Failure& failure);
    /// Has the file as it was before that, whichever run did it, unless it was changed in another way since.
    bool putBack(const TakenTracks& taken, base::Failure& failure);

private:
    /// What is to be written.
    struct Pending
    {
        TrackChanges changes;
        unsigned revision = 0;
    };

    TrackChanges pending();
    bool letStay(const TrackSet& tracks, base::Failure& failure);
    bool putBack(const TrackSet& tracks, base::Failure& failure);
    bool beginPutBack(const TrackSet& tracks, std::vector<Splice>& pieces, base::Failure& failure);
    bool openJournal(base::Failure& failure);
    bool finishBegun(base::Failure& failure);
    bool beginChange(base::Failure& failure);
    iTunesEditProblem knowContents(base::Failure& failure);
    iTunesEditProblem findTrack(std::uint64_t id, base::Failure& failure);
    void leaveEmptyJournal();
    iTunesEditProblem refused(const base::Failure& failure) const;
    void makeRoomInJournal(std::size_t changes = 1);
    void changed();
    void writeInBackground();
    bool writePending() noexcept;
    bool attempt(const std::function<bool()>& writing) noexcept;
    bool tryToWrite();
    bool writeWhatWaits(base::Failure& failure);
    bool findTaken(const TrackSet& tracks, std::optional<TakenTracks>& taken, base::Failure& failure);
    bool addDeletions(const TrackSet& tracks, base::Failure& failure);
    bool write(const TrackChanges& changes, Written& written, base::Failure& failure);
    bool writeOnce(const TrackChanges& changes, Written& written, base::Failure& failure);
    bool takePending(Pending& pending, base::Failure& failure);
    bool finishWriting(const Pending& pending, const Written& written, base::Failure& failure);
    void report(const std::string& error) const;

    const std::string m_path;
    std::mutex m_writeMutex; ///< one writing at a time; taken before the other one
    std::mutex m_mutex;      ///< for all below
    LibraryBackup m_backup;
    Journal m_journal;
    JournalContent m_content; ///< what the journal holds
    LibraryContents m_contents;
    TakenPieces m_taken;           ///< changes with both mutexes held
    unsigned m_revision = 0;       ///< counts the changes
    int m_failures = 0;            ///< of writings since the last change
    std::string m_reportedFailure; ///< of the last writing
    DelayedWork m_writing;
};
} // namespace itunes
