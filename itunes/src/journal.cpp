#include "journal.h"

#include "hash.h"
#include "librarywalk.h"
#include "log.h"
#include "newfile.h"

#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <vector>

using itunes::Journal;
using itunes::TrackChanges;
namespace platform = audiocore::platform;
using platform::NewFile;

namespace {
constexpr std::int64_t roomStep = 64 * 1024;
constexpr std::int64_t largestJournal = 512 * 1024 * 1024;
constexpr std::string_view firstLine = "melodrift journal 1\n";
constexpr char counts = '+';
constexpr char countsNotYet = '?';
constexpr std::size_t editFields = 7; // word, identifier, four texts, year

std::string hexadecimal(std::uint64_t number)
{
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016" PRIX64, number);
    return digits;
}

/// The text without line feeds and tabs, which part the lines and their fields.
std::string quoted(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\t')
            out += "\\t";
        else
            out += c;
    }
    return out;
}

std::string unquoted(std::string_view text)
{
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out += text[i];
            continue;
        }
        const char next = text[++i];
        out += next == 'n' ? '\n' : next == 't' ? '\t' : next;
    }
    return out;
}

std::vector<std::string_view> fieldsOf(std::string_view line)
{
    std::vector<std::string_view> fields;
    for (;;) {
        const std::size_t tab = line.find('\t');
        fields.push_back(line.substr(0, tab));
        if (tab == std::string_view::npos)
            return fields;
        line.remove_prefix(tab + 1);
    }
}

bool beginsAJournal(std::string_view content)
{
    return content.substr(0, firstLine.size()) == firstLine;
}

/// Whether nothing was ever answered in it: a kill or a power cut came before the first line was there.
bool isBlank(std::string_view content)
{
    const std::size_t last = content.find_last_not_of(std::string_view("\n\0", 2));
    const std::string_view begun = content.substr(0, last == std::string_view::npos ? 0 : last + 1);
    return firstLine.substr(0, begun.size()) == begun;
}

/// The record of a line that is whole; empty for another.
std::string_view recordOf(std::string_view line)
{
    const std::size_t checksum = line.rfind('\t');
    if (line.empty() || (line[0] != counts && line[0] != countsNotYet) ||
        checksum == std::string_view::npos || checksum == 0)
        return {};
    const std::string_view record = line.substr(1, checksum - 1);
    return line.substr(checksum + 1) == hexadecimal(itunes::hashOf(record)) ? record : std::string_view();
}

void mergeRecord(std::string_view record, TrackChanges& changes)
{
    const std::vector<std::string_view> fields = fieldsOf(record);
    const std::uint64_t id = fields.size() > 1 ? itunes::identifierOf(fields[1]) : 0;
    if (id == 0)
        return;
    if (fields[0] == "delete")
        itunes::mergeDeletion(changes, id);
    else if (fields[0] == "edit" && fields.size() == editFields)
        itunes::mergeEdit(changes, id,
                          {unquoted(fields[2]), unquoted(fields[3]), unquoted(fields[4]), unquoted(fields[5]),
                           std::int32_t(itunes::numberOf(fields[6]))});
}
} // namespace

void itunes::mergeDeletion(TrackChanges& changes, std::uint64_t id)
{
    changes[id] = {true, TrackEdit()};
}

void itunes::mergeEdit(TrackChanges& changes, std::uint64_t id, const TrackEdit& edit)
{
    TrackChange& change = changes[id];
    if (!change.deleted)
        change.edit = edit;
}

Journal::Journal(const std::string& libraryPath)
    : m_library(libraryPath), m_path(libraryPath + ".melodrift-journal")
{
}

bool Journal::exists() const
{
    platform::FileState state;
    return isOpen() || platform::stateOf(m_path, state);
}

bool Journal::open(TrackChanges& changes, std::string& error)
{
    constexpr int attempts = 10;
    for (int i = 0; i < attempts && !isOpen(); ++i) {
        if (!openOnce(error))
            return false;
        if (!isTheFileAtItsPath()) {
            m_file.reset(); // its former owner has just removed it
        } else if (!load(changes, error)) {
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
    if (!exists() && !platform::createLike(m_library, m_path, error))
        return false;
    m_file.reset(platform::openNoLink(m_path));
    if (!m_file) {
        const std::string reason = errno == ELOOP ? "it is a link" : std::strerror(errno);
        error = "the journal cannot be opened: " + reason;
        return false;
    }
    if (!platform::lockFile(m_file.get())) {
        error = "another program is changing the library";
        m_file.reset();
        return false;
    }
    return true;
}

bool Journal::isTheFileAtItsPath() const
{
    platform::FileState own;
    platform::FileState there;
    return platform::stateOf(m_file.get(), own) && platform::stateOf(m_path, there) &&
           own.device == there.device && own.inode == there.inode;
}

bool Journal::load(TrackChanges& changes, std::string& error)
{
    platform::FileState state;
    if (!platform::stateOf(m_file.get(), state) || !state.regular || state.links > 1 ||
        state.size > largestJournal) {
        error = "what is at the journal's name is no file that can be one";
        return false;
    }
    std::string lines(std::size_t(state.size), '\0');
    lines.resize(platform::readAt(m_file.get(), 0, lines.data(), lines.size()));
    m_room = std::int64_t(lines.size());
    m_end = 0;
    if (beginsAJournal(lines))
        return readLines(lines, changes, error);
    if (isBlank(lines) && platform::truncateTo(m_file.get(), 0)) {
        m_room = 0;
        return true;
    }
    error = "the file at the journal's name is no journal";
    return false;
}

bool Journal::readLines(const std::string& lines, TrackChanges& changes, std::string& error)
{
    std::vector<std::pair<std::size_t, std::size_t>> broken;
    std::size_t damaged = 0; // those with a whole one behind
    m_end = std::int64_t(firstLine.size());
    for (std::size_t at = firstLine.size(), end = 0; at < lines.size(); at = end + 1) {
        end = std::min(lines.find('\n', at), lines.size());
        const std::string_view record = recordOf(std::string_view(lines).substr(at, end - at));
        if (!record.empty()) {
            m_end = std::int64_t(end) + 1;
            damaged = broken.size();
            if (lines[at] == counts)
                mergeRecord(record, changes);
        } else if (end > at) {
            broken.emplace_back(at, end);
        }
    }
    if (damaged > 0 && !keepDamaged(damaged, error))
        return false;
    if (m_end > m_room) { // the last line lacks its line feed
        broken.emplace_back(std::size_t(m_room), std::size_t(m_end));
        m_room = m_end;
    }
    // A torn line must not look like a damaged one when others follow.
    for (const auto& [begin, end] : broken) {
        if (blank(begin, end))
            continue;
        error = "the journal cannot be written";
        return false;
    }
    return true;
}

bool Journal::keepDamaged(std::size_t lines, std::string& error) const
{
    const std::string kept = m_path + "-damaged";
    platform::removeLeftovers(m_path);
    const auto copy = NewFile::beside(m_path, NewFile::Content::Copied, error);
    if (!copy || copy->takeName(kept, error) != NewFile::Taking::Done) {
        error = "the damaged journal cannot be kept: " + error;
        return false;
    }
    audiocore::logLine(m_library, "the journal has damaged lines (" + std::to_string(lines) +
                                      "), their changes are lost; it is kept as " + kept);
    return true;
}

bool Journal::blank(std::size_t begin, std::size_t end)
{
    const std::string feeds(end - begin, '\n');
    return platform::writeAt(m_file.get(), std::int64_t(begin), feeds.data(), feeds.size()) == feeds.size();
}

/// Line feeds lie ready behind the end: a file that does not grow is flushed ten times as fast.
bool Journal::append(char state, const std::string& record)
{
    const std::string lead(m_end > 0 ? "\n" : firstLine);
    const std::string line = lead + state + record + '\t' + hexadecimal(hashOf(record)) + '\n';
    const std::int64_t begin = m_end > 0 ? m_end - 1 : 0;
    const std::int64_t end = begin + std::int64_t(line.size());
    if (!makeRoom(end) || platform::writeAt(m_file.get(), begin, line.data(), line.size()) != line.size() ||
        !platform::syncBytesToDevice(m_file.get())) {
        // What was answered with a failure must not count later.
        if (platform::truncateTo(m_file.get(), m_end))
            m_room = m_end;
        return false;
    }
    m_prepared = begin + std::int64_t(lead.size());
    m_end = end;
    return true;
}

bool Journal::makeRoom(std::int64_t size)
{
    if (size <= m_room)
        return true;
    if (size > largestJournal - roomStep)
        return false; // it could not be read again
    const std::string room(std::size_t(size - m_room + roomStep), '\n');
    if (platform::writeAt(m_file.get(), m_room, room.data(), room.size()) != room.size() ||
        !platform::syncToDevice(m_file.get()))
        return false;
    m_room += std::int64_t(room.size());
    return true;
}

bool Journal::addDeletion(std::uint64_t id)
{
    return append(counts, "delete\t" + hexadecimal(id));
}

bool Journal::prepareEdit(std::uint64_t id, const TrackEdit& edit)
{
    std::string record = "edit\t" + hexadecimal(id);
    for (const std::string* text : {&edit.name, &edit.artist, &edit.album, &edit.genre})
        record += '\t' + quoted(*text);
    return append(countsNotYet, record + '\t' + std::to_string(edit.year));
}

bool Journal::confirm()
{
    return platform::writeAt(m_file.get(), m_prepared, &counts, 1) == 1 &&
           platform::syncBytesToDevice(m_file.get());
}

void Journal::remove()
{
    if (!m_file)
        return;
    // Empty first: where an open file cannot be removed, an empty one stays, and says nothing.
    platform::truncateTo(m_file.get(), 0);
    if (isTheFileAtItsPath())
        platform::removeFile(m_path);
    m_file.reset();
    m_end = m_room = 0;
}
