// What a library file does for runs that are over when it is taken back.
#include "library/libraryfile.h"

#include "base/filebytes.h"

using base::Failure;
using itunes::LibraryFile;
using itunes::TakenTracks;

/// While the journal is open no other process changes the file in our way.
LibraryFile::Taking LibraryFile::take(const TrackSet& tracks, const Announce& announce, Failure& failure)
{
    pending();
    const std::lock_guard<std::mutex> writing(m_writeMutex);
    std::optional<TakenTracks> taken;
    if (!writeWhatWaits(failure) || !findTaken(tracks, taken, failure) || !taken) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        leaveEmptyJournal();
        return Taking::Refused;
    }
    const bool isAnnounced = announce(*taken, failure);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!isAnnounced || !addDeletions(tracks, failure)) {
            leaveEmptyJournal();
            return Taking::Refused;
        }
    }
    if (writeWhatWaits(failure))
        return Taking::Done;
    const std::lock_guard<std::mutex> lock(m_mutex);
    Failure borne;
    const bool stays = letStay(tracks, borne);
    leaveEmptyJournal();
    return stays ? Taking::Refused : Taking::Waits;
}

/// With the journal open: what is found stays so.
bool LibraryFile::findTaken(const TrackSet& tracks, std::optional<TakenTracks>& taken, Failure& failure)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!beginChange(failure))
            return false;
    }
    const File library = openLibrary(m_path, failure);
    if (library)
        taken = TakenTracks::find(base::SystemFile(library.get()), tracks, failure);
    return taken.has_value();
}

/// With the mutex of the state held.
bool LibraryFile::addDeletions(const TrackSet& tracks, Failure& failure)
{
    if (!m_journal.addDeletions(tracks, failure))
        return false;
    for (const std::uint64_t id : tracks)
        mergeDeletion(m_content.changes, id);
    changed();
    return true;
}

bool LibraryFile::putBack(const TakenTracks& taken, Failure& failure)
{
    pending();
    const std::lock_guard<std::mutex> writing(m_writeMutex);
    bool isOpen = writeWhatWaits(failure);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        isOpen = isOpen && beginChange(failure);
    }
    Written written;
    const bool done = isOpen && m_backup.flush(failure) && writeBack(m_path, taken, written, failure);
    const std::lock_guard<std::mutex> lock(m_mutex);
    leaveEmptyJournal();
    if (written.replaced) {
        m_taken.forget();
        m_contents = written.contents;
    }
    return done;
}
