#pragma once

#include "library/journalrecord.h"
#include "library/trackedit.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What the bytes of a journal say, wherever they lie; the file is the matter of `Journal`.
namespace itunes {
/// What a journal holds that is not in the library file yet.
struct JournalContent
{
    TrackChanges changes;
    /// The edit that its process was at when it was killed: nobody knows whether it is in the media file.
    std::optional<JournalRecord> begun;
};

/// More than any program leaves; so many, and so many bytes, are read in a moment and in little memory.
constexpr std::size_t mostJournalRecords = 100000;
constexpr std::int64_t largestJournal = 16 * 1024 * 1024;
constexpr std::string_view journalsFirstLine = "melodrift journal 3\n";

enum class JournalKind {
    Blank, ///< nothing was ever answered in it: a kill or a power cut came before the first line was there
    Journal,
    Other
};
JournalKind journalKindOf(std::string_view bytes);

struct JournalLines
{
    JournalContent content;
    std::size_t records = 0; ///< those that failed included
    std::size_t end = 0;     ///< behind the last one and its line feed
    std::size_t last = 0;    ///< where the last one begins
    std::size_t damaged = 0; ///< lines that are not whole and not the last one

    /// The journal as it is to be: without damaged lines, with the first line of today. Line feeds stand in
    /// their places, so that nothing looks damaged once others follow.
    std::string mended;
    std::size_t mendedBegin = 0; ///< of the first line that was not whole
    std::size_t mendedEnd = 0;   ///< of the last one
};

/// False where there are more records than mostJournalRecords. The bytes are those of a journal.
bool readJournal(std::string bytes, JournalLines& lines);
} // namespace itunes
