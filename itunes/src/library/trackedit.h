#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace itunes {
/// What the fixed calls carry of a track: always all of it, UTF-8. Empty texts and a year of 0 stand for a
/// field that the entry does not have.
struct TrackValues
{
    std::string name;
    std::string artist;
    std::string album;
    std::string genre;
    std::int32_t year = 0;
};

/// What an edit puts into a track's entry and its media file; fields without a value stay as they are,
/// whoever wrote them. Empty texts and a year of 0 take the field out.
struct TrackEdit
{
    std::optional<std::string> name;
    std::optional<std::string> artist;
    std::optional<std::string> album;
    std::optional<std::string> genre;
    std::optional<std::int32_t> year;

    bool isEmpty() const { return !name && !artist && !album && !genre && !year; }
};

/// What the wanted values say anew against those that were read.
TrackEdit differenceOf(const TrackValues& asRead, const TrackValues& wanted);

/// The change of one track. One that is deleted keeps the edit that came before.
struct TrackChange
{
    bool deleted = false;
    TrackEdit edit;
};

/// By persistent identifier.
using TrackChanges = std::unordered_map<std::uint64_t, TrackChange>;
/// Persistent identifiers.
using TrackSet = std::unordered_set<std::uint64_t>;

/// The last edit of a field counts, and a deletion until it is taken back.
void mergeDeletion(TrackChanges& changes, std::uint64_t id);
void mergeReturn(TrackChanges& changes, std::uint64_t id);
/// Those of tracks that are deleted, as if they were not.
TrackChanges editsOfDeleted(const TrackChanges& changes);
void mergeEdit(TrackChanges& changes, std::uint64_t id, const TrackEdit& edit);
} // namespace itunes
