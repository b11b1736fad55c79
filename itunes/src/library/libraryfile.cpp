#include "library/libraryfile.h"

#include "base/log.h"
#include "base/newfile.h"
#include "library/begunedit.h"
#include "library/libraryreading.h"

#include <exception>

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

std::unique_ptr<itunes::TrackStore> LibraryFile::read(std::string& error)
{
    base::FileState before;
    const TrackChanges changes = pending();
    const bool known = base::stateOf(m_path, before);
    std::unique_ptr<TrackStore> store = readLibrary(m_path, changes, error);
    if (known && store) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_backup.knowWhole(before);
        m_contents = {before, store->identifiers(), 0};
    }
    return store;
}

/// What the file does not hold yet.
itunes::TrackChanges LibraryFile::pending()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::string error;
    if (!m_journal.isOpen() && m_journal.exists()) {
        if (openJournal(error) || m_journal.isOpen())
            m_writing.askAtOnce();
        else
            report(error);
    }
    return m_content.changes;
}

/// False when the journal cannot be had, or an edit in it has to wait: then nothing may follow it.
bool LibraryFile::openJournal(std::string& error)
{
    return m_journal.open(m_content, error) && finishBegun(error);
}

/// Finishes what a killed process was at. What cannot be finished is kept aside; false when it has to wait.
bool LibraryFile::finishBegun(std::string& error)
{
    if (!m_content.begun)
        return true;
    std::string reason = "it was another user's";
    const Redone redone = m_journal.isTheUsers() ? redoEdit(m_path, *m_content.begun, reason) : Redone::Not;
    if (redone == Redone::NotYet) {
        error = reason;
        return false;
    }
    if (redone != Redone::Whole && !m_journal.keepAside("an edit was cut short: " + reason, error))
        return false;
    if (!(redone == Redone::Not ? m_journal.cancel() : m_journal.confirm())) {
        error = "the journal cannot be written";
        return false;
    }
    if (redone != Redone::Not)
        mergeEdit(m_content.changes, m_content.begun->id, m_content.begun->edit);
    m_content.begun.reset();
    ++m_revision;
    return true;
}

bool LibraryFile::remove(std::uint64_t id)
{
    makeRoomInJournal();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!beginChange())
        return false;
    if (!m_journal.addDeletion(id)) {
        report("the journal cannot be written, the disk may be full");
        return false;
    }
    mergeDeletion(m_content.changes, id);
    changed();
    return true;
}

bool LibraryFile::edit(const JournalRecord& edit, const std::function<bool()>& writeMedia)
{
    makeRoomInJournal();
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::string error;
    if (!holds(edit.id, error)) {
        report(error);
        return false;
    }
    if (edit.edit.isEmpty())
        return writeMedia(); // the library has nothing to do with it
    if (!beginChange())
        return false;
    if (!m_journal.beginEdit(edit)) {
        report("the journal cannot be written, the disk may be full");
        return false;
    }
    if (!writeMedia()) {
        m_journal.cancel();
        m_writing.ask(); // takes the journal away when nothing else is in it
        return false;
    }
    if (!m_journal.confirm()) {
        report("the journal cannot be written");
        m_content.begun = edit; // the media file has it: what hinders the disk may pass
        m_writing.ask();
        return false;
    }
    mergeEdit(m_content.changes, edit.id, edit.edit);
    changed();
    return true;
}

/// Whether the file holds the track, and only one of the identifier. Without another writer since the last
/// look nothing is read.
bool LibraryFile::holds(std::uint64_t id, std::string& error)
{
    base::FileState now;
    if (!base::stateOf(m_path, now) || !(now == m_contents.state)) {
        const File library = openLibrary(m_path, error);
        if (!library || !readContents(library.get(), m_contents, error))
            return false;
    }
    const std::size_t count = m_contents.count(id);
    if (count != 1)
        error = count == 0 ? "the track is no longer in it" : "several tracks have the identifier now";
    return count == 1;
}

/// What has to be there before a change. A broken library needs no backup: it does not change until it is
/// whole again.
bool LibraryFile::beginChange()
{
    std::string error;
    // Who holds the journal is the only one who makes backups.
    if (openJournal(error) && m_backup.keep(error) != LibraryBackup::Result::Failed)
        return true;
    report(error);
    if (m_journal.isOpen() && m_content.changes.empty() && !m_content.begun)
        m_journal.remove();
    return false;
}

/// A full journal goes into the library first. Where that fails, the change does.
void LibraryFile::makeRoomInJournal()
{
    bool full = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        full = m_journal.isOpen() && m_journal.isFull();
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
    Pending pending;
    std::string error;
    bool written = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_journal.isOpen())
            return true;
        written = takePending(pending, error);
    }
    Written result;
    written = written && (pending.changes.empty() ||
                          (m_backup.flush(error) && writeChanges(m_path, pending.changes, result, error)));
    const std::lock_guard<std::mutex> lock(m_mutex);
    written = written && finishWriting(pending, result, error);
    if (!written && error != m_reportedFailure)
        report("the changes wait in the journal: " + error);
    m_reportedFailure = written ? std::string() : error;
    return written;
}

bool LibraryFile::takePending(Pending& pending, std::string& error)
{
    if (!finishBegun(error))
        return false;
    pending = {m_content.changes, m_revision};
    return pending.changes.empty() || m_backup.keep(error) == LibraryBackup::Result::Kept;
}

/// The journal goes, unless it holds more by now.
bool LibraryFile::finishWriting(const Pending& pending, const Written& written, std::string& error)
{
    if (written.contents.tracks > 0)
        m_contents = written.contents;
    if (pending.revision != m_revision)
        return true;
    if (written.editsWithoutTrack > 0 &&
        !m_journal.keepAside("edits were not made (" + std::to_string(written.editsWithoutTrack) +
                                 "), their tracks are no longer in the library",
                             error))
        return false;
    m_journal.remove();
    m_content = JournalContent();
    return true;
}

void LibraryFile::report(const std::string& error) const
{
    base::logLine(m_path, "the music library was not changed: " + error);
}
