#include "libraryfile.h"

#include "librarywrite.h"
#include "log.h"
#include "platform.h"

using itunes::LibraryFile;
namespace platform = audiocore::platform;

namespace {
constexpr std::chrono::milliseconds pauseBeforeWriting(1000);
} // namespace

LibraryFile::LibraryFile(const std::string& path)
    : m_path(path), m_backup(path + ".melodrift-backup"), m_journal(path),
      m_writing([this] { writePending(); }, pauseBeforeWriting)
{
    platform::removeLeftovers(path);
}

LibraryFile::~LibraryFile()
{
    m_writing.stop();
    writePending();
}

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

/// What has to be there before a change.
bool LibraryFile::beginChange()
{
    std::string error;
    if (keepBackup(error) && m_journal.open(m_changes, error))
        return true;
    report(error);
    return false;
}

bool LibraryFile::keepBackup(std::string& error)
{
    if (m_hasBackup)
        return true;
    std::FILE* lockFile = nullptr;
    const std::string copy = platform::copyBeside(m_path, lockFile, error);
    const File lock(lockFile);
    m_hasBackup = !copy.empty() && platform::replaceFile(copy, m_backup, error);
    if (!m_hasBackup && !copy.empty())
        platform::removeFile(copy);
    return m_hasBackup;
}

/// The copy need not be on the disk before the file itself changes.
bool LibraryFile::flushBackup(std::string& error)
{
    if (!m_backupIsFlushed) {
        const File backup(platform::openFile(m_backup, true));
        m_backupIsFlushed = !backup || platform::syncToDevice(backup.get()); // the user may have removed it
    }
    if (!m_backupIsFlushed)
        error = "the backup cannot be written";
    return m_backupIsFlushed;
}

void LibraryFile::changed()
{
    ++m_revision;
    m_writing.ask();
}

void LibraryFile::writePending()
{
    TrackChanges changes;
    unsigned revision = 0;
    std::string error;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_journal.isOpen())
            return;
        if (!m_changes.empty() && !keepBackup(error)) {
            report(error);
            return;
        }
        changes = m_changes;
        revision = m_revision;
    }
    const bool written = changes.empty() || (flushBackup(error) && writeChanges(m_path, changes, error));
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!written) {
        report("the changes wait in the journal: " + error);
    } else if (revision == m_revision) {
        m_journal.remove();
        m_changes.clear();
    }
}

void LibraryFile::report(const std::string& error) const
{
    audiocore::logLine(m_path, "the music library was not changed: " + error);
}
