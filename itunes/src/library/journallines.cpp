#include "library/journallines.h"

#include <algorithm>
#include <iterator>
#include <utility>

using itunes::ChangeKind;
using itunes::JournalKind;
using itunes::JournalLines;
using itunes::JournalRecord;
using itunes::RecordState;

namespace {
/// That of today and those of earlier versions, all of one size.
constexpr std::string_view firstLines[] = {itunes::journalsFirstLine, "melodrift journal 2\n",
                                           "melodrift journal 1\n"};

bool beginsFirstLine(std::string_view bytes)
{
    return std::any_of(std::begin(firstLines), std::end(firstLines),
                       [bytes](std::string_view line) { return line.substr(0, bytes.size()) == bytes; });
}

bool isBlank(std::string_view bytes)
{
    const std::size_t last = bytes.find_last_not_of(std::string_view("\n\0", 2));
    return beginsFirstLine(bytes.substr(0, last == std::string_view::npos ? 0 : last + 1));
}

/// Line feeds take the place of what is not whole.
void blank(JournalLines& lines, std::size_t begin, std::size_t end)
{
    if (lines.mendedEnd == 0)
        lines.mendedBegin = begin;
    lines.mendedEnd = end;
    std::fill(lines.mended.begin() + std::ptrdiff_t(begin), lines.mended.begin() + std::ptrdiff_t(end), '\n');
}

void take(const JournalRecord& record, RecordState state, itunes::JournalContent& content)
{
    // An edit with others behind it was answered, and with a failure.
    content.begun = state == RecordState::Begun ? std::optional(record) : std::nullopt;
    if (state != RecordState::Counts)
        return;
    switch (record.kind) {
    case ChangeKind::Edit:
    case ChangeKind::Reversal:
        itunes::mergeEdit(content.changes, record.id, record.edit);
        break;
    case ChangeKind::Deletion:
        itunes::mergeDeletion(content.changes, record.id);
        break;
    case ChangeKind::Return:
        for (const std::uint64_t id : record.returned)
            itunes::mergeReturn(content.changes, id);
        break;
    }
}
} // namespace

JournalKind itunes::journalKindOf(std::string_view bytes)
{
    if (isBlank(bytes))
        return JournalKind::Blank;
    const bool isWhole = bytes.size() >= journalsFirstLine.size();
    return isWhole && beginsFirstLine(bytes.substr(0, journalsFirstLine.size())) ? JournalKind::Journal
                                                                                 : JournalKind::Other;
}

bool itunes::readJournal(std::string bytes, JournalLines& lines)
{
    lines = JournalLines();
    lines.mended = std::move(bytes);
    lines.end = journalsFirstLine.size();
    bool endsBroken = false;
    for (std::size_t at = lines.end, end = 0; at < lines.mended.size(); at = end + 1) {
        end = std::min(lines.mended.find('\n', at), lines.mended.size());
        if (end == at)
            continue;
        const auto record = recordOf(std::string_view(lines.mended).substr(at, end - at));
        endsBroken = !record;
        if (!record) {
            blank(lines, at, end);
            ++lines.damaged;
            continue;
        }
        if (++lines.records > mostJournalRecords)
            return false;
        lines.end = end + 1;
        lines.last = at;
        take(record->first, record->second, lines.content);
    }
    lines.damaged -= endsBroken ? 1 : 0;
    // The last line may lack its line feed, and the first one may be that of an earlier version.
    lines.mended.resize(std::max(lines.mended.size(), lines.end), '\n');
    lines.mended.replace(0, journalsFirstLine.size(), journalsFirstLine);
    return true;
}
