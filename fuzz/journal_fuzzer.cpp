// Arbitrary bytes as lines of a library's journal: what is taken for a change says what a call can have said,
// and is read again as it is written.
#include "library/journalrecord.h"
#include "library/localtext.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace {
bool isClean(const std::optional<std::string>& text)
{
    return !text || itunes::cleanText(*text) == *text;
}

void expectSound(const itunes::JournalRecord& record, itunes::RecordState state)
{
    const itunes::TrackEdit& edit = record.edit;
    if (record.id == 0 || edit.year.value_or(0) < 0 || !isClean(edit.name) || !isClean(edit.artist) ||
        !isClean(edit.album) || !isClean(edit.genre))
        std::abort();
    const std::string line = itunes::lineOf(record, state);
    const auto again = itunes::recordOf(std::string_view(line).substr(0, line.size() - 1));
    if (line.find('\n') != line.size() - 1 || !again || again->second != state ||
        itunes::lineOf(again->first, state) != line)
        std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view lines(reinterpret_cast<const char*>(data), size);
    while (!lines.empty()) {
        const std::string_view line = lines.substr(0, lines.find('\n'));
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        // Few inputs come to a right checksum: the line counts with its own as well.
        for (const std::string& whole : {std::string(line), itunes::withChecksum(std::string(line))})
            if (const auto record = itunes::recordOf(whole))
                expectSound(record->first, record->second);
    }
    return 0;
}
