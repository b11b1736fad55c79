#include "library/journal.h"

#include "base/keptfile.h"
#include "base/log.h"
#include "base/newfile.h"

#include <algorithm>
#include <cerrno>
#include <utility>

using base::Failure;
using itunes::Journal;
using itunes::largestJournal;

namespace {
constexpr std::int64_t roomStep = 64 * 1024;
} // namespace

std::string itunes::journalOf(const std::string& libraryPath)
{
    return libraryPath + ".melodrift-journal";
}

Journal::Journal(const std::string& libraryPath) : m_library(libraryPath), m_path(journalOf(libraryPath)) {}

bool Journal::exists() const
{
    base::FileState state;
    return isOpen() || base::stateOf(m_path, state);
}

bool Journal::isFullFor(std::size_t changes) const
{
    return m_records + changes > mostJournalRecords || m_end > largestJournal - 2 * roomStep;
}

bool Journal::open(JournalContent& content, Failure& failure)
{
    constexpr int attempts = 10;
    for (int i = 0; i < attempts && !isOpen(); ++i) {
        if (!openOnce(failure))
            return false;
        if (!isTheFileAtItsPath()) {
            m_file.reset(); // its former owner has just removed it
        } else if (!load(content, failure)) {
            m_file.reset();
            return false;
        }
    }
    if (!isOpen())
        failure = {"other programs are changing the library", Failure::Kind::InUse};
    return isOpen();
}

bool Journal::openOnce(Failure& failure)
{
    if (!exists() && !base::createPrivate(m_path, m_library, failure))
        return false;
    m_file.reset(base::openNoLink(m_path));
    if (!m_file) {
        const std::string what = "the journal cannot be opened: ";
        failure = errno == ELOOP ? Failure{what + "it is a link"} : base::systemFailure(what);
        return false;
    }
    if (base::ownerOf(m_file.get(), m_library) == base::Owner::Other)
        failure = {"the file at the journal's name belongs to another user", Failure::Kind::InUse};
    else if (!base::lockFile(m_file.get()))
        failure = {"another program is changing the library", Failure::Kind::InUse};
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

bool Journal::load(JournalContent& content, Failure& failure)
{
    base::FileState state;
    if (!base::stateOf(m_file.get(), state) || !state.regular || state.links > 1 ||
        state.size > largestJournal) {
        failure = {"what is at the journal's name is no file that can be one"};
        return false;
    }
    std::string lines(std::size_t(state.size), '\0');
    if (base::readAt(m_file.get(), 0, lines.data(), lines.size()) != lines.size()) {
        failure = {"the journal cannot be read to its end"};
        return false;
    }
    const JournalKind kind = journalKindOf(lines);
    if (kind == JournalKind::Other) {
        failure = {"the file at the journal's name is no journal"};
        return false;
    }
    // One of the library's owner only he can make so; he could block others in other ways, too.
    if (!base::makePrivate(m_file.get()) && isTheUsers()) {
        failure = {"the journal cannot be kept from others"};
        return false;
    }
    m_room = m_end = m_begun = 0;
    m_records = 0;
    if (kind == JournalKind::Blank) {
        failure = {"the journal cannot be written"};
        return base::truncateTo(m_file.get(), 0);
    }
    JournalLines read;
    if (readJournal(std::move(lines), read))
        return take(read, content, failure);
    failure = {"the journal holds more changes than any program leaves"};
    return false;
}

bool Journal::take(const JournalLines& lines, JournalContent& content, Failure& failure)
{
    if (lines.damaged > 0 && !keepAside("the journal has damaged lines (" + std::to_string(lines.damaged) +
                                            "), their changes are lost",
                                        failure))
        return false;
    m_records = lines.records;
    m_end = std::int64_t(lines.end);
    m_begun = std::int64_t(lines.last);
    m_room = std::int64_t(lines.mended.size());
    const auto write = [this, &lines](std::size_t begin, std::size_t end) {
        return base::writeAt(m_file.get(), std::int64_t(begin), lines.mended.data() + begin, end - begin) ==
               end - begin;
    };
    if (!write(lines.mended.size() - 1, lines.mended.size()) || !write(lines.mendedBegin, lines.mendedEnd) ||
        !write(0, journalsFirstLine.size())) {
        failure = {"the journal cannot be written"};
        return false;
    }
    for (const auto& [id, change] : lines.content.changes)
        content.changes[id] = change;
    content.begun = lines.content.begun;
    return true;
}

bool Journal::keepAside(const std::string& reason, Failure& failure) const
{
    const std::string kept = base::keepFile(m_path, m_library, "journal-kept", failure);
    if (kept.empty()) {
        failure.text.insert(0, "the journal cannot be kept aside: ");
        return false;
    }
    base::logLine(m_library, reason + "; the journal is kept as " + kept);
    return true;
}

/// Line feeds lie ready behind the end: a file that does not grow is flushed ten times as fast.
bool Journal::append(const std::string& lines, std::size_t records, Failure& failure)
{
    errno = 0;
    const std::string lead(m_end > 0 ? "\n" : journalsFirstLine);
    const std::string bytes = lead + lines;
    const std::int64_t begin = m_end > 0 ? m_end - 1 : 0;
    const std::int64_t end = begin + std::int64_t(bytes.size());
    if (m_records + records > mostJournalRecords || !makeRoom(end) ||
        base::writeAt(m_file.get(), begin, bytes.data(), bytes.size()) != bytes.size() ||
        !base::syncBytesToDevice(m_file.get())) {
        const std::string what = "the journal cannot be written: ";
        failure = errno != 0 ? base::systemFailure(what) : Failure{what + "it is full"};
        // What was answered with a failure must not count later.
        if (base::truncateTo(m_file.get(), m_end))
            m_room = m_end;
        return false;
    }
    m_begun = begin + std::int64_t(lead.size());
    m_end = end;
    m_records += records;
    return true;
}

bool Journal::append(const JournalRecord& record, RecordState state, Failure& failure)
{
    return append(lineOf(record, state), 1, failure);
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

/// A line each: what a power cut leaves of them was not answered.
bool Journal::addDeletions(const TrackSet& tracks, Failure& failure)
{
    JournalRecord record;
    record.kind = ChangeKind::Deletion;
    std::string lines;
    for (const std::uint64_t id : tracks) {
        record.id = id;
        lines += lineOf(record, RecordState::Counts);
    }
    return append(lines, tracks.size(), failure);
}

bool Journal::addReturn(const std::vector<std::uint64_t>& ids, Failure& failure)
{
    JournalRecord record;
    record.kind = ChangeKind::Return;
    record.returned = ids;
    return append(record, RecordState::Counts, failure);
}

bool Journal::beginEdit(const JournalRecord& edit, Failure& failure)
{
    return append(edit, RecordState::Begun, failure);
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
