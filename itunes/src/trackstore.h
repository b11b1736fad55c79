#pragma once

#include "itunes/itunestrackrecord.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace itunes {
/// Keeps texts for as long as it lives, in large blocks.
class TextArena
{
public:
    /// The copy, zero-terminated; null for an empty text.
    const char* keep(std::string_view text);

private:
    std::vector<std::unique_ptr<char[]>> m_blocks;
    char* m_free = nullptr;
    std::size_t m_left = 0;
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

private:
    std::vector<iTunesTrackRecord> m_records;
    std::vector<Place> m_places; ///< by identifier
    TextArena m_texts;
};
} // namespace itunes
