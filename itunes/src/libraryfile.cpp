#include "libraryfile.h"

#include "libraryreading.h"
#include "librarywrite.h"
#include "log.h"
#include "newfile.h"

#include <exception>

using itunes::LibraryFile;
namespace platform = audiocore::platform;

namespace {
constexpr std::chrono::milliseconds pauseBeforeWriting(1000);
constexpr int mostRetries = 7; // each after twice the pause: four minutes in all
} // namespace

LibraryFile::LibraryFile(const std::string& path)
    : m_path(path), m_backup(path), m_journal(path),
      m_writing([this] { writeInBackground(); }, pauseBeforeWriting)
{
    platform::removeLeftovers(path);
}

LibraryFile::~LibraryFile()
{
    m_writing.stop();
    writePending();
}

std::unique_ptr<itunes::TrackStore> LibraryFile::read(std::string& error)
{
    platform::FileState before;
    const bool known = platform::stateOf(m_path, before);
    std::unique_ptr<TrackStore> store = readLibrary(m_path, pending(), error);
    if (known && store) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_backup.knowWhole(before);
    }
    return store;
}

/// What the file does not hold yet.
itunes::TrackChanges LibraryFile::pending()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::string error;
    if (!m_journal.isOpen() && m_journal.exists()) {
        if (m_journal.open(m_changes, error))
            m_writing.askAtOnce();
        else
            report(error);
    }
    return m_changes;
}

bool LibraryFile::remove(std::uint64_t id)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!beginChange())
        return false;
    if (!m_journal.addDeletion(id)) {
        report("the journal cannot be written, the disk may be full");
        return false;
    }
    mergeDeletion(m_changes, id);
    changed();
    return true;
}

bool LibraryFile::edit(std::uint64_t id, const TrackEdit& edit, const std::function<bool()>& between)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!beginChange())
        return false;
    if (!m_journal.prepareEdit(id, edit)) {
        report("the journal cannot be written, the disk may be full");
        return false;
    }
    if (!between()) {
        m_writing.ask(); // takes the journal away when nothing else is in it
        return false;
    }
    if (!m_journal.confirm()) {
        report("the journal cannot be written");
        return false;
    }
    mergeEdit(m_changes, id, edit);
    changed();
    return true;
}

/// What has to be there before a change. A broken library needs no backup: it does not change until it is
/// whole again.
bool LibraryFile::beginChange()
{
    std::string error;
    if (m_backup.keep(error) != LibraryBackup::Result::Failed && m_journal.open(m_changes, error))
        return true;
    report(error);
    return false;
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
    if (writePending())
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_failures < mostRetries)
        m_writing.askAfter(pauseBeforeWriting * (2 << m_failures));
    ++m_failures;
}

/// False when changes still wait that could not be written.
bool LibraryFile::writePending() noexcept
{
    try {
        return tryToWrite();
    } catch (const std::exception& fault) {
        audiocore::logFailure(m_path, "the changes wait in the journal", fault.what());
        return false;
    }
}

bool LibraryFile::tryToWrite()
{
    TrackChanges changes;
    unsigned revision = 0;
    std::string error;
    bool written = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_journal.isOpen())
            return true;
        changes = m_changes;
        revision = m_revision;
        written = changes.empty() || m_backup.keep(error) == LibraryBackup::Result::Kept;
    }
    written = written && (changes.empty() || (m_backup.flush(error) && writeChanges(m_path, changes, error)));
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!written && error != m_reportedFailure)
        report("the changes wait in the journal: " + error);
    m_reportedFailure = written ? std::string() : error;
    if (written && revision == m_revision) {
        m_journal.remove();
        m_changes.clear();
    }
    return written;
}

void LibraryFile::report(const std::string& error) const
{
    audiocore::logLine(m_path, "the music library was not changed: " + error);
}
