#include "journal.h"

#include "hash.h"
#include "librarywalk.h"
#include "platform.h"

#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <vector>

using itunes::Journal;
using itunes::TrackChanges;
namespace platform = audiocore::platform;

namespace {
constexpr std::int64_t roomStep = 64 * 1024;
constexpr std::int64_t largestJournal = 512 * 1024 * 1024;
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

/// The record of a line that counts and is whole; empty otherwise.
std::string_view recordOf(std::string_view line)
{
    const std::size_t checksum = line.rfind('\t');
    if (line.empty() || line[0] != counts || checksum == std::string_view::npos)
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
        if (!exists() && !create(error))
            return false;
        m_file.reset(platform::openFile(m_path, true));
        if (!m_file) {
            error = "the journal cannot be opened: " + std::string(std::strerror(errno));
            return false;
        }
        if (!platform::lockFile(m_file.get())) {
            error = "another program is changing the library";
            m_file.reset();
            return false;
        }
        if (!isTheFileAtItsPath()) {
            m_file.reset(); // its former owner has just removed it
        } else if (!load(changes, error)) {
            m_file.reset();
            return false;
        }
    }
    return isOpen();
}

bool Journal::isTheFileAtItsPath() const
{
    platform::FileState own;
    platform::FileState there;
    return platform::stateOf(m_file.get(), own) && platform::stateOf(m_path, there) &&
           own.device == there.device && own.inode == there.inode;
}

bool Journal::create(std::string& error)
{
    std::FILE* lockFile = nullptr;
    const std::string made = platform::newBeside(m_library, lockFile, error);
    const File lock(lockFile);
    return !made.empty() && platform::replaceFile(made, m_path, error);
}

bool Journal::load(TrackChanges& changes, std::string& error)
{
    platform::FileState state;
    if (!platform::stateOf(m_file.get(), state) || !state.regular || state.size > largestJournal) {
        error = "the journal is no file that can be read";
        return false;
    }
    std::string lines(std::size_t(state.size), '\0');
    lines.resize(platform::readAt(m_file.get(), 0, lines.data(), lines.size()));
    for (std::size_t at = 0; at < lines.size();) {
        const std::size_t end = std::min(lines.find('\n', at), lines.size());
        const std::string_view record = recordOf(std::string_view(lines).substr(at, end - at));
        if (!record.empty())
            mergeRecord(record, changes);
        at = end + 1;
    }
    // Behind the last line, torn or not, with a line feed in between.
    m_room = std::int64_t(lines.size());
    const std::size_t last = lines.find_last_not_of('\n');
    m_end = last == std::string::npos ? 0 : std::int64_t(last) + 2;
    return true;
}

/// Line feeds lie ready behind the end: a file that does not grow is flushed ten times as fast.
bool Journal::append(char state, const std::string& record)
{
    const std::string line =
        (m_end > 0 ? "\n" : "") + std::string(1, state) + record + '\t' + hexadecimal(hashOf(record)) + '\n';
    const std::int64_t begin = m_end > 0 ? m_end - 1 : 0;
    const std::int64_t end = begin + std::int64_t(line.size());
    if (!makeRoom(end) || platform::writeAt(m_file.get(), begin, line.data(), line.size()) != line.size() ||
        !platform::syncBytesToDevice(m_file.get())) {
        // What was answered with a failure must not count later.
        if (platform::truncateTo(m_file.get(), m_end))
            m_room = m_end;
        return false;
    }
    m_prepared = begin + std::int64_t(line.find(state));
    m_end = end;
    return true;
}

bool Journal::makeRoom(std::int64_t size)
{
    if (size <= m_room)
        return true;
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
    // Empty first: where an open file cannot be removed, an empty one stays, and says nothing.
    if (m_file)
        platform::truncateTo(m_file.get(), 0);
    platform::removeFile(m_path);
    m_file.reset();
    m_end = m_room = 0;
}
