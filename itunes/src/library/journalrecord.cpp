#include "library/journalrecord.h"

#include "base/hash.h"
#include "library/librarywalk.h"
#include "library/localtext.h"

#include <cinttypes>
#include <cstdio>
#include <limits>

using itunes::ChangeKind;
using itunes::CoverMark;
using itunes::JournalRecord;
using itunes::RecordState;
using itunes::TrackEdit;

namespace {
constexpr char isSet = '=';
constexpr std::size_t deleteFields = 2;    // word, identifier; or identifiers, of a return
constexpr std::size_t wholeEditFields = 7; // word, identifier, four texts, year: all of them set
constexpr std::size_t editFields = 9; // the same, each set or not, and the picture's path and hash, or the
                                      // media file's size and time

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

std::string field(const std::optional<std::string>& text)
{
    return text ? '\t' + (isSet + quoted(*text)) : "\t";
}

std::string editFieldsOf(const TrackEdit& edit)
{
    return field(edit.name) + field(edit.artist) + field(edit.album) + field(edit.genre) +
           (edit.year ? '\t' + (isSet + std::to_string(*edit.year)) : "\t");
}

std::string contentOf(const JournalRecord& record)
{
    std::string content;
    switch (record.kind) {
    case ChangeKind::Deletion:
        return "delete\t" + hexadecimal(record.id);
    case ChangeKind::Return:
        for (const std::uint64_t id : record.returned)
            content += (content.empty() ? "return\t" : " ") + hexadecimal(id);
        return content;
    case ChangeKind::Reversal:
        return "revert\t" + hexadecimal(record.id) + editFieldsOf(record.edit) + '\t' +
               hexadecimal(std::uint64_t(record.media.size)) + '\t' +
               hexadecimal(std::uint64_t(record.media.modified));
    case ChangeKind::Edit:
        break;
    }
    return "change\t" + hexadecimal(record.id) + editFieldsOf(record.edit) + '\t' +
           quoted(record.cover.path) + '\t' + hexadecimal(record.cover.hash);
}

/// Up to so many: what is behind them stays in the last one.
std::vector<std::string_view> fieldsOf(std::string_view line, std::size_t most)
{
    std::vector<std::string_view> fields;
    for (;;) {
        const std::size_t tab = fields.size() + 1 < most ? line.find('\t') : std::string_view::npos;
        fields.push_back(line.substr(0, tab));
        if (tab == std::string_view::npos)
            return fields;
        line.remove_prefix(tab + 1);
    }
}

/// The part of a line between its state and its checksum; empty for a line that is not whole.
std::string_view contentOf(std::string_view line)
{
    const std::size_t checksum = line.rfind('\t');
    if (line.empty() || checksum == std::string_view::npos || checksum == 0)
        return {};
    const std::string_view content = line.substr(1, checksum - 1);
    return line.substr(checksum + 1) == hexadecimal(base::hashOf(content)) ? content : std::string_view();
}

std::optional<RecordState> stateOf(char byte)
{
    for (const RecordState state : {RecordState::Counts, RecordState::Begun, RecordState::Failed})
        if (byte == char(state))
            return state;
    return std::nullopt;
}

/// False for what is no year that a call can carry.
bool readYear(std::string_view text, std::optional<std::int32_t>& year)
{
    const std::uint64_t number = itunes::numberOf(text);
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos ||
        number > std::uint64_t(std::numeric_limits<std::int32_t>::max()))
        return false;
    year = std::int32_t(number);
    return true;
}

/// The value of a field that is set; nothing for one that is not. False for what is neither.
bool readField(std::string_view text, bool marked, std::optional<std::string_view>& value)
{
    if (marked && text.empty())
        return true;
    if (marked && text[0] != isSet)
        return false;
    value = text.substr(marked ? 1 : 0);
    return true;
}

bool readValues(const std::vector<std::string_view>& fields, bool marked, TrackEdit& edit)
{
    std::size_t at = 2;
    for (std::optional<std::string>* text : {&edit.name, &edit.artist, &edit.album, &edit.genre}) {
        std::optional<std::string_view> value;
        if (!readField(fields[at++], marked, value))
            return false;
        if (value)
            *text = itunes::cleanText(unquoted(*value));
    }
    std::optional<std::string_view> year;
    return readField(fields[at], marked, year) && (!year || readYear(*year, edit.year));
}

bool readEdit(const std::vector<std::string_view>& fields, JournalRecord& record)
{
    // The shorter form is that of earlier versions.
    const bool marked = fields.size() == editFields && (fields[0] == "change" || fields[0] == "revert");
    if (!marked && (fields[0] != "edit" || fields.size() != wholeEditFields))
        return false;
    record.id = itunes::identifierOf(fields[1]);
    if (fields[0] == "revert") {
        record.kind = ChangeKind::Reversal;
        record.media = {std::int64_t(itunes::identifierOf(fields[editFields - 2])),
                        std::int64_t(itunes::identifierOf(fields[editFields - 1]))};
    } else if (marked) {
        record.cover = {unquoted(fields[editFields - 2]), itunes::identifierOf(fields[editFields - 1])};
    }
    return readValues(fields, marked, record.edit);
}

/// A change of tracks that says nothing but which ones.
bool readTracks(const std::vector<std::string_view>& fields, JournalRecord& record)
{
    constexpr std::size_t digits = 16;
    if (fields[0] == "delete") {
        record.kind = ChangeKind::Deletion;
        record.id = itunes::identifierOf(fields[1]);
        return true;
    }
    record.kind = ChangeKind::Return;
    for (std::string_view ids = fields[1];; ids.remove_prefix(digits + 1)) {
        record.returned.push_back(itunes::identifierOf(ids.substr(0, digits)));
        if (record.returned.back() == 0)
            return false;
        if (ids.size() <= digits)
            break;
        if (ids[digits] != ' ')
            return false;
    }
    record.id = record.returned.front();
    return fields[0] == "return";
}
} // namespace

CoverMark itunes::markOf(const std::vector<char>& picture, const std::string& path)
{
    if (picture.empty())
        return {};
    return {path, base::hashOf({picture.data(), picture.size()})};
}

std::string itunes::lineOf(const JournalRecord& record, RecordState state)
{
    return withChecksum(char(state) + contentOf(record)) + '\n';
}

std::string itunes::withChecksum(const std::string& line)
{
    return line + '\t' + hexadecimal(base::hashOf(std::string_view(line).substr(line.empty() ? 0 : 1)));
}

std::optional<std::pair<JournalRecord, RecordState>> itunes::recordOf(std::string_view line)
{
    const std::optional<RecordState> state = line.empty() ? std::nullopt : stateOf(line[0]);
    if (!state)
        return std::nullopt;
    const std::vector<std::string_view> fields = fieldsOf(contentOf(line), editFields + 1);
    JournalRecord record;
    const bool read = fields.size() == deleteFields ? readTracks(fields, record) : readEdit(fields, record);
    if (!read || record.id == 0)
        return std::nullopt;
    return std::make_pair(std::move(record), *state);
}
