#include "library/libraryfile.h"

#include "base/log.h"
#include "base/newfile.h"
#include "library/begunedit.h"

#include <algorithm>
#include <exception>

using base::Failure;
using itunes::LibraryFile;

namespace {
constexpr std::chrono::milliseconds pauseBeforeWriting(1000);
constexpr int mostRetries = 7; // each after twice the pause: four minutes in all
} // namespace

LibraryFile::LibraryFile(const std::string& path)
    : m_path(path), m_backup(path), m_journal(path),
      m_writing([this] { writeInBackground(); }, pauseBeforeWriting)
{
    base::removeLeftovers(path);
}

LibraryFile::~LibraryFile()
{
    m_writing.stop();
    writePending();
}

void LibraryFile::prepare()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_journal.exists())
        m_writing.askAtOnce();
}

std::unique_ptr<itunes::TrackStore> LibraryFile::read(ReadingFailure& failure)
{
    const std::lock_guard<std::mutex> writing(m_writeMutex); // what was read is what is written next
    base::FileState before;
    const TrackChanges changes = pending();
    const bool known = base::stateOf(m_path, before);
    std::unique_ptr<TrackStore> store = readLibrary(m_path, changes, failure);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_taken.forget();
    if (known && store) {
        m_backup.knowWhole(before);
        m_contents = {before, store->identifiers(), 0};
        m_taken.begin(before);
    }
    return store;
}

/// What the file does not hold yet.
itunes::TrackChanges LibraryFile::pending()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_journal.isOpen() && m_journal.exists()) {
        Failure failure;
        if (openJournal(failure) || m_journal.isOpen())
            m_writing.askAtOnce();
        else
            report(failure.text);
    }
    return m_content.changes;
}

/// False when the journal cannot be had, or an edit in it has to wait: then nothing may follow it.
bool LibraryFile::openJournal(Failure& failure)
{
    return m_journal.open(m_content, failure) && finishBegun(failure);
}

/// Finishes what a killed process was at. What cannot be finished is kept aside; false when it has to wait.
bool LibraryFile::finishBegun(Failure& failure)
{
    if (!m_content.begun)
        return true;
    std::string reason = "it was another user's";
    const Redone redone = m_journal.isTheUsers() ? redoEdit(m_path, *m_content.begun, reason) : Redone::Not;
    if (redone == Redone::NotYet) {
        failure = {reason};
        return false;
    }
    const bool done = redone == Redone::Whole || redone == Redone::WithoutPicture;
    if (redone == Redone::NotBegun)
        report(reason);
    else if (redone != Redone::Whole && !m_journal.keepAside("an edit was cut short: " + reason, failure))
        return false;
    if (!(done ? m_journal.confirm() : m_journal.cancel())) {
        failure = {"the journal cannot be written"};
        return false;
    }
    if (done)
        mergeEdit(m_content.changes, m_content.begun->id, m_content.begun->edit);
    m_content.begun.reset();
    ++m_revision;
    return true;
}

iTunesEditProblem LibraryFile::remove(const TrackSet& tracks)
{
    makeRoomInJournal(tracks.size());
    const std::lock_guard<std::mutex> lock(m_mutex);
    Failure failure;
    return beginChange(failure) && addDeletions(tracks, failure) ? ITUNES_EDIT_DONE : refused(failure);
}

iTunesEditProblem LibraryFile::edit(const JournalRecord& edit, const std::function<bool()>& writeMedia)
{
    makeRoomInJournal();
    const bool reverses = edit.kind == ChangeKind::Reversal;
    std::unique_lock<std::mutex> writing(m_writeMutex, std::defer_lock);
    if (reverses)
        writing.lock(); // a file that has just been replaced is nobody else's
    const std::lock_guard<std::mutex> lock(m_mutex);
    Failure failure;
    if (const iTunesEditProblem problem = findTrack(edit.id, failure)) {
        report(failure.text);
        return problem;
    }
    if (reverses && !m_taken.isGoodFor(m_contents.state))
        return refused(changedByOthers());
    if (edit.edit.isEmpty()) // the library has nothing to do with it
        return writeMedia() ? ITUNES_EDIT_DONE : ITUNES_MEDIA_NOT_SAVED;
    if (!beginChange(failure) || !m_journal.beginEdit(edit, failure))
        return refused(failure);
    if (!writeMedia()) {
        m_journal.cancel();
        m_writing.ask(); // takes the journal away when nothing else is in it
        return ITUNES_MEDIA_NOT_SAVED;
    }
    if (!m_journal.confirm()) {
        m_content.begun = edit; // the media file has it: what hinders the disk may pass
        m_writing.ask();
        return refused({"the journal cannot be written"});
    }
    mergeEdit(m_content.changes, edit.id, edit.edit);
    changed();
    return ITUNES_EDIT_DONE;
}

iTunesEditProblem LibraryFile::bringBack(const TrackSet& tracks)
{
    const std::lock_guard<std::mutex> writing(m_writeMutex);
    Failure failure;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (knowContents(failure))
            return refused(failure);
        const auto isThere = [this](std::uint64_t id) { return m_contents.count(id) > 0; };
        if (std::all_of(tracks.begin(), tracks.end(), isThere))
            return letStay(tracks, failure) ? ITUNES_EDIT_DONE : refused(failure);
    }
    // All come back at one stroke: none of them may be in the file when they do.
    const bool done = writeWhatWaits(failure) && putBack(tracks, failure);
    const std::lock_guard<std::mutex> lock(m_mutex);
    leaveEmptyJournal();
    return done ? ITUNES_EDIT_DONE : refused(failure);
}

bool LibraryFile::putBack(const TrackSet& tracks, Failure& failure)
{
    std::vector<Splice> pieces;
    Written written;
    if (!beginPutBack(tracks, pieces, failure) || !m_backup.flush(failure) ||
        !writeBack(m_path, m_taken, pieces, written, failure))
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_taken.putBack(tracks, written.contents);
    m_contents = written.contents;
    return true;
}

/// Takes the deletions of these tracks out of the journal.
bool LibraryFile::letStay(const TrackSet& tracks, Failure& failure)
{
    std::vector<std::uint64_t> waiting;
    for (const std::uint64_t id : tracks) {
        const auto change = m_content.changes.find(id);
        if (change != m_content.changes.end() && change->second.deleted)
            waiting.push_back(id);
    }
    if (waiting.empty())
        return true;
    if (!m_journal.addReturn(waiting, failure))
        return false;
    for (const std::uint64_t id : waiting)
        mergeReturn(m_content.changes, id);
    changed();
    return true;
}

/// What has to be there before tracks go back into the file; finds what goes back.
bool LibraryFile::beginPutBack(const TrackSet& tracks, std::vector<Splice>& pieces, Failure& failure)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    base::FileState now;
    if (!base::stateOf(m_path, now)) {
        failure = base::systemFailure();
        return false;
    }
    if (!m_taken.isGoodFor(now)) {
        failure = changedByOthers();
        return false;
    }
    pieces = m_taken.splicesFor(tracks);
    if (pieces.empty()) {
        failure = {"what was taken out of it is not kept any more", Failure::Kind::NotKept};
        return false;
    }
    // Changes that came meanwhile hold up the journal, which has the deletions still.
    return beginChange(failure) && letStay(tracks, failure);
}

std::size_t LibraryFile::bytesKept()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_taken.bytes();
}

iTunesEditProblem LibraryFile::refused(const Failure& failure) const
{
    report(failure.text);
    return problemOf(failure.kind);
}

/// Looks which tracks the file holds. Without another writer since the last look nothing is read.
iTunesEditProblem LibraryFile::knowContents(Failure& failure)
{
    base::FileState now;
    if (base::stateOf(m_path, now) && now == m_contents.state)
        return ITUNES_EDIT_DONE;
    const File library = openLibrary(m_path, failure);
    return library && readContents(library.get(), m_contents, failure) ? ITUNES_EDIT_DONE
                                                                       : problemOf(failure.kind);
}

/// Whether the file holds the track, and only one of the identifier.
iTunesEditProblem LibraryFile::findTrack(std::uint64_t id, Failure& failure)
{
    if (const iTunesEditProblem problem = knowContents(failure))
        return problem;
    const std::size_t count = m_contents.count(id);
    if (count == 1)
        return ITUNES_EDIT_DONE;
    failure = {count == 0 ? "the track is no longer in it" : "several tracks have the identifier now"};
    return count == 0 ? ITUNES_TRACK_GONE : ITUNES_TRACK_AMBIGUOUS;
}

/// What has to be there before a change. A broken library needs no backup: it does not change until it is
/// whole again.
bool LibraryFile::beginChange(Failure& failure)
{
    // Who holds the journal is the only one who makes backups.
    if (openJournal(failure) && m_backup.keep(failure) != LibraryBackup::Result::Failed)
        return true;
    leaveEmptyJournal();
    return false;
}

void LibraryFile::leaveEmptyJournal()
{
    if (m_journal.isOpen() && m_content.changes.empty() && !m_content.begun)
        m_journal.remove();
}

/// A full journal goes into the library first. Where that fails, the change does.
void LibraryFile::makeRoomInJournal(std::size_t changes)
{
    bool full = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        full = m_journal.isOpen() && m_journal.isFullFor(changes);
    }
    if (full)
        writePending();
}

void LibraryFile::changed()
{
    ++m_revision;
    m_failures = 0;
    m_writing.ask();
}

/// What hinders the writing may pass: a file that another program is writing, a full disk.
void LibraryFile::writeInBackground()
{
    if (attempt([this] { return pending(), tryToWrite(); }))
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_failures < mostRetries)
        m_writing.askAfter(pauseBeforeWriting * (2 << m_failures));
    ++m_failures;
}

bool LibraryFile::writePending() noexcept
{
    return attempt([this] { return tryToWrite(); });
}

/// False when changes still wait that could not be written.
bool LibraryFile::attempt(const std::function<bool()>& writing) noexcept
{
    try {
        return writing();
    } catch (const std::exception& fault) {
        base::logFailure(m_path, "the changes wait in the journal", fault.what());
        return false;
    }
}

bool LibraryFile::tryToWrite()
{
    const std::lock_guard<std::mutex> writing(m_writeMutex);
    Failure failure;
    const bool written = writeWhatWaits(failure);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!written && failure.text != m_reportedFailure)
        report("the changes wait in the journal: " + failure.text);
    m_reportedFailure = written ? std::string() : failure.text;
    return written;
}

/// With the mutex of writing held.
bool LibraryFile::writeWhatWaits(Failure& failure)
{
    Pending pending;
    bool written = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_journal.isOpen())
            return true;
        written = takePending(pending, failure);
    }
    Written result;
    written = written && (pending.changes.empty() ||
                          (m_backup.flush(failure) && write(pending.changes, result, failure)));
    const std::lock_guard<std::mutex> lock(m_mutex);
    return written && finishWriting(pending, result, failure);
}

/// Edits that a deletion came upon are made first: what is taken out is as its user had it.
bool LibraryFile::write(const TrackChanges& changes, Written& written, Failure& failure)
{
    const TrackChanges edits = editsOfDeleted(changes);
    if (!edits.empty() && !writeOnce(edits, written, failure))
        return false;
    return writeOnce(changes, written, failure);
}

bool LibraryFile::writeOnce(const TrackChanges& changes, Written& written, Failure& failure)
{
    if (!writeChanges(m_path, changes, written, failure))
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!written.replaced)
        return true;
    m_taken.follow(written.before, written.splices, written.contents);
    m_contents = written.contents;
    return true;
}

bool LibraryFile::takePending(Pending& pending, Failure& failure)
{
    if (!finishBegun(failure))
        return false;
    pending = {m_content.changes, m_revision};
    return pending.changes.empty() || m_backup.keep(failure) == LibraryBackup::Result::Kept;
}

/// The journal goes, unless it holds more by now.
bool LibraryFile::finishWriting(const Pending& pending, const Written& written, Failure& failure)
{
    if (pending.revision != m_revision)
        return true;
    if (written.editsWithoutTrack > 0 &&
        !m_journal.keepAside("edits were not made (" + std::to_string(written.editsWithoutTrack) +
                                 "), their tracks are no longer in the library",
                             failure))
        return false;
    m_journal.remove();
    m_content = JournalContent();
    return true;
}

void LibraryFile::report(const std::string& error) const
{
    base::logLine(m_path, "the music library was not changed: " + error);
}
