#include "library/journal.h"

#include "base/keptfile.h"
#include "base/log.h"
#include "base/newfile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

using itunes::Journal;
using itunes::JournalRecord;

namespace {
constexpr std::int64_t roomStep = 64 * 1024;
// A journal within both is read in a moment and in little memory.
constexpr std::int64_t largestJournal = 16 * 1024 * 1024;
constexpr std::size_t mostRecords = 100000;
constexpr std::string_view firstLine = "melodrift journal 2\n";
constexpr std::string_view formerFirstLine = "melodrift journal 1\n";

bool beginsAJournal(std::string_view content)
{
    const std::string_view begin = content.substr(0, firstLine.size());
    return begin == firstLine || begin == formerFirstLine;
}

/// Whether nothing was ever answered in it: a kill or a power cut came before the first line was there.
bool isBlank(std::string_view content)
{
    const std::size_t last = content.find_last_not_of(std::string_view("\n\0", 2));
    const std::string_view begun = content.substr(0, last == std::string_view::npos ? 0 : last + 1);
    return firstLine.substr(0, begun.size()) == begun || formerFirstLine.substr(0, begun.size()) == begun;
}

/// Lines that are not whole. Line feeds take their place, so that they do not look damaged once others
/// follow.
class BrokenLines
{
public:
    void add(std::string& lines, std::size_t begin, std::size_t end)
    {
        if (m_count++ == 0)
            m_begin = begin;
        m_end = end;
        std::fill(lines.begin() + std::ptrdiff_t(begin), lines.begin() + std::ptrdiff_t(end), '\n');
    }
    std::size_t count() const { return m_count; }
    /// Puts the line feeds into the file at one stroke.
    bool write(std::FILE* file, const std::string& lines) const
    {
        const std::size_t size = m_end - m_begin;
        return base::writeAt(file, std::int64_t(m_begin), lines.data() + m_begin, size) == size;
    }

private:
    std::size_t m_count = 0;
    std::size_t m_begin = 0; // of the first one
    std::size_t m_end = 0;   // of the last one
};

void merge(const JournalRecord& record, itunes::TrackChanges& changes)
{
    if (record.deletes)
        itunes::mergeDeletion(changes, record.id);
    else
        itunes::mergeEdit(changes, record.id, record.edit);
}
} // namespace

Journal::Journal(const std::string& libraryPath)
    : m_library(libraryPath), m_path(libraryPath + ".melodrift-journal")
{
}

bool Journal::exists() const
{
    base::FileState state;
    return isOpen() || base::stateOf(m_path, state);
}

bool Journal::isFull() const
{
    return m_records >= mostRecords || m_end > largestJournal - 2 * roomStep;
}

bool Journal::open(JournalContent& content, std::string& error)
{
    constexpr int attempts = 10;
    for (int i = 0; i < attempts && !isOpen(); ++i) {
        if (!openOnce(error))
            return false;
        if (!isTheFileAtItsPath()) {
            m_file.reset(); // its former owner has just removed it
        } else if (!load(content, error)) {
            m_file.reset();
            return false;
        }
    }
    if (!isOpen())
        error = "other programs are changing the library";
    return isOpen();
}

bool Journal::openOnce(std::string& error)
{
    if (!exists() && !base::createPrivate(m_path, m_library, error))
        return false;
    m_file.reset(base::openNoLink(m_path));
    if (!m_file) {
        const std::string reason = errno == ELOOP ? "it is a link" : std::strerror(errno);
        error = "the journal cannot be opened: " + reason;
        return false;
    }
    if (base::ownerOf(m_file.get(), m_library) == base::Owner::Other)
        error = "the file at the journal's name belongs to another user";
    else if (!base::lockFile(m_file.get()))
        error = "another program is changing the library";
    else
        return true;
    m_file.reset();
    return false;
}

bool Journal::isTheFileAtItsPath() const
{
    base::FileState own;
    base::FileState there;
    return base::stateOf(m_file.get(), own) && base::stateOf(m_path, there) && own.device == there.device &&
           own.inode == there.inode;
}

bool Journal::load(JournalContent& content, std::string& error)
{
    base::FileState state;
    if (!base::stateOf(m_file.get(), state) || !state.regular || state.links > 1 ||
        state.size > largestJournal) {
        error = "what is at the journal's name is no file that can be one";
        return false;
    }
    std::string lines(std::size_t(state.size), '\0');
    lines.resize(base::readAt(m_file.get(), 0, lines.data(), lines.size()));
    const bool blank = isBlank(lines);
    if (!blank && !beginsAJournal(lines)) {
        error = "the file at the journal's name is no journal";
        return false;
    }
    // One of the library's owner only he can make so; he could block others in other ways, too.
    if (!base::makePrivate(m_file.get()) && isTheUsers()) {
        error = "the journal cannot be kept from others";
        return false;
    }
    m_room = blank ? 0 : std::int64_t(lines.size());
    m_end = m_begun = 0;
    m_records = 0;
    if (!blank)
        return readLines(lines, content, error);
    error = "the journal cannot be written";
    return base::truncateTo(m_file.get(), 0);
}

bool Journal::readLines(std::string& lines, JournalContent& content, std::string& error)
{
    JournalContent found;
    BrokenLines broken;
    bool endsBroken = false;
    m_end = std::int64_t(firstLine.size());
    for (std::size_t at = firstLine.size(), end = 0; at < lines.size(); at = end + 1) {
        end = std::min(lines.find('\n', at), lines.size());
        if (end == at)
            continue;
        const auto record = recordOf(std::string_view(lines).substr(at, end - at));
        endsBroken = !record;
        if (!record) {
            broken.add(lines, at, end);
            continue;
        }
        if (++m_records > mostRecords) {
            error = "the journal holds more changes than any program leaves";
            return false;
        }
        m_end = std::int64_t(end) + 1;
        m_begun = std::int64_t(at);
        // An edit with others behind it was answered, and with a failure.
        found.begun.reset();
        if (record->second == RecordState::Counts)
            merge(record->first, found.changes);
        else if (record->second == RecordState::Begun)
            found.begun = record->first;
    }
    const std::size_t damaged = broken.count() - (endsBroken ? 1 : 0);
    if (damaged > 0 &&
        !keepAside("the journal has damaged lines (" + std::to_string(damaged) + "), their changes are lost",
                   error))
        return false;
    // The last line may lack its line feed, and the first one may be that of an earlier version.
    lines.resize(std::size_t(std::max(m_room, m_end)), '\n');
    m_room = std::int64_t(lines.size());
    if (!base::writeAt(m_file.get(), m_room - 1, "\n", 1) || !broken.write(m_file.get(), lines) ||
        base::writeAt(m_file.get(), 0, firstLine.data(), firstLine.size()) != firstLine.size()) {
        error = "the journal cannot be written";
        return false;
    }
    for (const auto& [id, change] : found.changes)
        content.changes[id] = change;
    content.begun = found.begun;
    return true;
}

bool Journal::keepAside(const std::string& reason, std::string& error) const
{
    std::string failure;
    const std::string kept = base::keepFile(m_path, m_library, "journal-kept", failure);
    if (kept.empty()) {
        error = "the journal cannot be kept aside: " + failure;
        return false;
    }
    base::logLine(m_library, reason + "; the journal is kept as " + kept);
    return true;
}

/// Line feeds lie ready behind the end: a file that does not grow is flushed ten times as fast.
bool Journal::append(const JournalRecord& record, RecordState state)
{
    const std::string lead(m_end > 0 ? "\n" : firstLine);
    const std::string line = lead + lineOf(record, state);
    const std::int64_t begin = m_end > 0 ? m_end - 1 : 0;
    const std::int64_t end = begin + std::int64_t(line.size());
    if (m_records >= mostRecords || !makeRoom(end) ||
        base::writeAt(m_file.get(), begin, line.data(), line.size()) != line.size() ||
        !base::syncBytesToDevice(m_file.get())) {
        // What was answered with a failure must not count later.
        if (base::truncateTo(m_file.get(), m_end))
            m_room = m_end;
        return false;
    }
    m_begun = begin + std::int64_t(lead.size());
    m_end = end;
    ++m_records;
    return true;
}

bool Journal::makeRoom(std::int64_t size)
{
    if (size <= m_room)
        return true;
    if (size > largestJournal - roomStep)
        return false; // it could not be read again
    const std::string room(std::size_t(size - m_room + roomStep), '\n');
    if (base::writeAt(m_file.get(), m_room, room.data(), room.size()) != room.size() ||
        !base::syncToDevice(m_file.get()))
        return false;
    m_room += std::int64_t(room.size());
    return true;
}

bool Journal::addDeletion(std::uint64_t id)
{
    JournalRecord record;
    record.id = id;
    record.deletes = true;
    return append(record, RecordState::Counts);
}

bool Journal::beginEdit(const JournalRecord& edit)
{
    return append(edit, RecordState::Begun);
}

bool Journal::confirm()
{
    return mark(RecordState::Counts);
}

bool Journal::cancel()
{
    return mark(RecordState::Failed);
}

bool Journal::mark(RecordState state)
{
    const char byte = char(state);
    return base::writeAt(m_file.get(), m_begun, &byte, 1) == 1 && base::syncBytesToDevice(m_file.get());
}

void Journal::remove()
{
    if (!m_file)
        return;
    // Empty first: where an open file cannot be removed, an empty one stays, and says nothing.
    base::truncateTo(m_file.get(), 0);
    if (isTheFileAtItsPath())
        base::removeFile(m_path);
    m_file.reset();
    m_end = m_room = m_begun = 0;
    m_records = 0;
}
