#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace itunes {
/// What an edit puts into a track's entry, UTF-8. Empty texts and a year of 0 take the field out.
struct TrackEdit
{
    std::string name;
    std::string artist;
    std::string album;
    std::string genre;
    std::int32_t year = 0;
};

/// The change of one track; the last edit counts, and a deletion for good.
struct TrackChange
{
    bool deleted = false;
    TrackEdit edit;
};

/// By persistent identifier.
using TrackChanges = std::unordered_map<std::uint64_t, TrackChange>;
} // namespace itunes
