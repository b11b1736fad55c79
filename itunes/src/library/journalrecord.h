#pragma once

#include "base/platform.h"
#include "library/trackedit.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace itunes {
/// The picture of an edit: the file that it comes from, and what tells its bytes from others.
struct CoverMark
{
    std::string path; ///< empty for no picture
    std::uint64_t hash = 0;
};

CoverMark markOf(const std::vector<char>& picture, const std::string& path);

/// What tells whether a media file was written.
struct MediaMark
{
    std::int64_t size = 0;
    std::int64_t modified = 0;

    static MediaMark of(const base::FileState& media) { return {media.size, media.modified}; }
    bool operator==(const MediaMark& other) const { return size == other.size && modified == other.modified; }
};

enum class ChangeKind {
    Edit,
    Reversal, ///< of an edit: what the library says again is not always what the media file does
    Deletion,
    Return ///< of tracks whose deletion is taken back
};

/// One change as the journal has it.
struct JournalRecord
{
    std::uint64_t id = 0; ///< of a return the first one
    ChangeKind kind = ChangeKind::Edit;
    TrackEdit edit;
    CoverMark cover;
    MediaMark media; ///< of a reversal, before it
    std::vector<std::uint64_t> returned = {};
};

/// How far a change has come.
enum class RecordState : char {
    Counts = '+',
    Begun = '?', ///< an edit whose media file is being written
    Failed = '-'
};

/// The first byte of a line is its state and can be changed in place. Ends with a line feed.
std::string lineOf(const JournalRecord& record, RecordState state);
/// A line from its state and content, without the line feed.
std::string withChecksum(const std::string& line);
/// Nothing for a line that is not whole, or says what no call can have said. Texts are clean. Without the
/// line feed.
std::optional<std::pair<JournalRecord, RecordState>> recordOf(std::string_view line);
} // namespace itunes
