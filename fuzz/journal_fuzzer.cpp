// Arbitrary bytes as a library's journal, and as its lines: what is taken for a change says what a call can
// have said, and is read again as it is written.
#include "library/journallines.h"
#include "library/journalrecord.h"
#include "library/localtext.h"
#include "promise.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

using itunes::JournalContent;
using itunes::JournalLines;
using itunes::RecordState;

namespace {
bool isClean(const std::optional<std::string>& text)
{
    return !text || itunes::cleanText(*text) == *text;
}

void expectSound(const itunes::JournalRecord& record, RecordState state)
{
    const itunes::TrackEdit& edit = record.edit;
    promise(record.id != 0 && edit.year.value_or(0) >= 0 && isClean(edit.name) && isClean(edit.artist) &&
                isClean(edit.album) && isClean(edit.genre),
            "a change says what a call can say");
    const std::string line = itunes::lineOf(record, state);
    promise(line.find('\n') == line.size() - 1, "a change is one line");
    const auto again = itunes::recordOf(std::string_view(line).substr(0, line.size() - 1));
    promise(again && again->second == state && itunes::lineOf(again->first, state) == line,
            "a change is read as it is written");
}

void readLines(std::string_view lines)
{
    while (!lines.empty()) {
        const std::string_view line = lines.substr(0, lines.find('\n'));
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        // Few inputs come to a right checksum: the line counts with its own as well.
        for (const std::string& whole : {std::string(line), itunes::withChecksum(std::string(line))})
            if (const auto record = itunes::recordOf(whole))
                expectSound(record->first, record->second);
    }
}

/// The bytes with a right checksum on every line.
std::string signedLines(std::string_view lines)
{
    std::string all;
    while (!lines.empty()) {
        const std::string_view line = lines.substr(0, lines.find('\n'));
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        all += line.empty() ? "\n" : itunes::withChecksum(std::string(line)) + '\n';
    }
    return all;
}

bool same(const itunes::TrackEdit& a, const itunes::TrackEdit& b)
{
    return a.name == b.name && a.artist == b.artist && a.album == b.album && a.genre == b.genre &&
           a.year == b.year;
}

bool same(const JournalContent& a, const JournalContent& b)
{
    return a.begun.has_value() == b.begun.has_value() &&
           (!a.begun || (a.begun->id == b.begun->id && same(a.begun->edit, b.begun->edit))) &&
           a.changes.size() == b.changes.size() &&
           std::all_of(a.changes.begin(), a.changes.end(), [&b](const auto& change) {
               const auto other = b.changes.find(change.first);
               return other != b.changes.end() && other->second.deleted == change.second.deleted &&
                      same(other->second.edit, change.second.edit);
           });
}

void readWhole(const std::string& bytes)
{
    if (itunes::journalKindOf(bytes) != itunes::JournalKind::Journal)
        return;
    JournalLines lines;
    if (!itunes::readJournal(bytes, lines))
        return;
    promise(lines.mended.size() >= bytes.size() && lines.end <= lines.mended.size(),
            "a journal is mended in its place");
    JournalLines again;
    promise(itunes::readJournal(lines.mended, again) && again.damaged == 0 && again.mended == lines.mended &&
                again.end == lines.end && again.last == lines.last && again.records == lines.records &&
                same(again.content, lines.content),
            "a mended journal says the same");

    itunes::JournalRecord record;
    record.id = 0xA1;
    record.kind = itunes::ChangeKind::Deletion;
    const std::string line = itunes::lineOf(record, RecordState::Counts);
    JournalLines longer;
    promise(itunes::readJournal(lines.mended.substr(0, lines.end) + line, longer) &&
                longer.records == lines.records + 1 && longer.last == lines.end && !longer.content.begun &&
                longer.content.changes.count(record.id) == 1,
            "a further change is read behind the others");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string_view lines(bytes);
    readLines(lines);
    readWhole(bytes);
    readWhole(std::string(itunes::journalsFirstLine) + signedLines(lines));
    return 0;
}
