#include "itunes/librarysight.h"

#include "base/fileowner.h"
#include "library/journal.h"
#include "library/libraryreading.h"
#include "library/librarywalk.h"
#include "library/location.h"

namespace {
/// What the file at the journal's name holds, which nobody touches; nothing with the reason, or where there
/// is none.
itunes::JournalContent waitingFor(const std::string& library, std::string& problem)
{
    const itunes::File file(base::openFile(itunes::journalOf(library), false));
    base::FileState state;
    if (!file || !base::stateOf(file.get(), state))
        return {};
    itunes::JournalLines lines;
    std::string bytes;
    const bool canBeOne = state.regular && state.size <= itunes::largestJournal &&
                          base::ownerOf(file.get(), library) != base::Owner::Other;
    if (canBeOne) {
        bytes.resize(std::size_t(state.size));
        bytes.resize(base::readAt(file.get(), 0, bytes.data(), bytes.size()));
    }
    const itunes::JournalKind kind = itunes::journalKindOf(bytes);
    if (!canBeOne || kind == itunes::JournalKind::Other)
        problem = "the file at the journal's name is no journal";
    else if (kind == itunes::JournalKind::Journal && !itunes::readJournal(std::move(bytes), lines))
        problem = "the journal holds more changes than any program leaves";
    else if (lines.damaged > 0)
        problem = "the journal has damaged lines";
    return lines.content;
}
} // namespace

iTunesLibrarySight::iTunesLibrarySight(const std::string& path)
{
    const std::string real = base::realPath(path);
    const std::string file = real.empty() ? path : real;
    const itunes::JournalContent content = waitingFor(file, m_waitingProblem);
    m_waiting = content.changes.size() + (content.begun ? 1 : 0);
    itunes::ReadingFailure failure;
    m_store = itunes::readLibrary(file, content.changes, failure);
    m_problem = failure.failure.text;
}

int iTunesLibrarySight::count() const
{
    return m_store ? m_store->count() : 0;
}

const iTunesTrackRecord& iTunesLibrarySight::at(int position) const
{
    return m_store->records()[position];
}

std::string iTunesLibrarySight::pathAt(int position) const
{
    const iTunesTrackRecord& track = at(position);
    return track.skipA != 0 || !track.location ? std::string() : itunes::pathOf(track.location);
}

std::uint64_t iTunesLibrarySight::identifierAt(int position) const
{
    const char* const digits = at(position).persistentId;
    const std::uint64_t id = digits ? itunes::identifierOf(digits) : 0;
    return id != 0 && !m_store->isAmbiguous(id) ? id : 0;
}
