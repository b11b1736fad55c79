#pragma once

#include "itunes/itunestrackrecord.h"
#include "library/trackedit.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace itunes {
/// Keeps texts for as long as it lives, in blocks that grow with them.
class TextArena
{
public:
    /// The copy, zero-terminated; null for an empty text.
    const char* keep(std::string_view text);

private:
    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_free = nullptr;
    std::size_t m_left = 0;
    std::size_t m_nextSize = 4 * 1024;
};

/// One reading of the library: the records that the application gets, and the library's own way from a
/// track's identifier to what it needs to know, whatever the application does to the records.
class TrackStore
{
public:
    struct Place
    {
        std::uint64_t id;
        const char* location; ///< null for a track without a file
        // What the record said when it was delivered.
        const char* name;
        const char* artist;
        const char* album;
        const char* genre;
        std::uint64_t year;
        bool gone;
    };

    void add(const iTunesTrackRecord& record, std::uint64_t id);
    /// After the last track.
    void finish();

    iTunesTrackRecord* records() { return m_records.empty() ? nullptr : m_records.data(); }
    int count() const { return int(m_records.size()); }
    TextArena& texts() { return m_texts; }

    /// Null for a track that is not there or no longer.
    const Place* find(std::uint64_t id) const;
    /// Whether several tracks have the identifier: find() answers one of them.
    bool isAmbiguous(std::uint64_t id) const;
    void forget(std::uint64_t id);
    /// Whether it was read, forgotten or not.
    bool wasRead(std::uint64_t id) const;
    void remember(std::uint64_t id);

    /// What the caller last saw of a track that is there: as it was read, or as he has had it written since.
    TrackValues valuesOf(const Place& place) const;
    void noteEdit(std::uint64_t id, const TrackValues& values) { m_edited[id] = values; }
    /// All identifiers in ascending order.
    std::vector<std::uint64_t> identifiers() const;

private:
    std::pair<std::size_t, std::size_t> placesOf(std::uint64_t id) const;
    void setGone(std::uint64_t id, bool gone);

    std::vector<iTunesTrackRecord> m_records;
    std::vector<Place> m_places; ///< by identifier
    std::unordered_map<std::uint64_t, TrackValues> m_edited;
    TextArena m_texts;
};
} // namespace itunes
