#pragma once

#include "library/librarywalk.h"
#include "library/trackedit.h"

#include <array>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace itunes {
/// Bytes of the library, as ByteSource gives it, that others take the place of.
struct Splice
{
    Span old;
    std::string text;
    std::uint64_t track = 0; ///< persistent identifier of the one whose entry, or place in a playlist, goes
    bool isEntry = false;
    std::string taken = {}; ///< what stood there of that track, once the library is written
};

/// Finds what has to change in a library for some changes of tracks: their entries, and nothing else. What
/// says already what it should stays as it is.
class EntrySplices final : public LibraryVisitor
{
public:
    explicit EntrySplices(const TrackChanges& changes) : m_changes(changes) {}

    void trackBegins(std::uint64_t key, std::uint64_t inside) override;
    void trackHas(const Pair& pair) override;
    void trackEnds(const Span& whole) override;

    const std::vector<Splice>& splices() const { return m_splices; }
    /// Persistent identifiers of the tracks whose entries go, by their numbers; without the numbers that a
    /// track which stays has as well: its places in the playlists cannot be told from the other's.
    std::unordered_map<std::uint64_t, std::uint64_t> deleted() const;
    std::uint64_t tracksLeft() const { return m_tracks - m_gone; }
    /// How many of the edits are of no track that is there.
    std::size_t editsWithoutTrack() const;

private:
    static constexpr std::size_t places = 10;

    /// What the entry at hand says in one field.
    struct Place
    {
        std::vector<Span> wholes; ///< one for each time that the key is there
        Span value;               ///< of the last one, which is the one that counts
        std::string text;
    };

    static std::size_t placeOf(Field field);
    void changeEntry(const TrackEdit& edit);
    void change(Field field, const char* key, const std::optional<std::string>& wanted);
    void put(Field field, const char* key, const std::string& wanted, const char* element);

    const TrackChanges& m_changes;
    std::vector<Splice> m_splices;
    std::unordered_map<std::uint64_t, std::uint64_t> m_deleted;
    std::unordered_set<std::uint64_t> m_edited; ///< persistent identifiers
    std::vector<std::uint64_t> m_staying;
    std::uint64_t m_tracks = 0;
    std::uint64_t m_gone = 0;

    std::array<Place, places> m_entry; ///< in the order that entries have
    std::uint64_t m_id = 0;
    std::uint64_t m_trackId = 0;
    std::uint64_t m_inside = 0;
    bool m_hasLead = false;
    std::string m_lead;
};

/// Finds the places of tracks in the playlists. They are given as EntrySplices tells those that go.
class PlaylistSplices final : public LibraryVisitor
{
public:
    explicit PlaylistSplices(const std::unordered_map<std::uint64_t, std::uint64_t>& tracks)
        : m_tracks(tracks)
    {
    }

    bool wantsPlaylists() const override { return true; }
    void playlistItem(std::uint64_t trackId, const Span& whole) override;

    const std::vector<Splice>& splices() const { return m_splices; }

private:
    const std::unordered_map<std::uint64_t, std::uint64_t>& m_tracks;
    std::vector<Splice> m_splices;
};
} // namespace itunes
