#pragma once

#include "library/librarywalk.h"
#include "library/trackedit.h"
#include "library/trackstore.h"

namespace itunes {
/// Makes the records of a library's tracks, with the changes that its file does not hold yet.
class TrackReader final : public LibraryVisitor
{
public:
    TrackReader(TrackStore& store, const TrackChanges& changes) : m_store(store), m_changes(changes) {}

    void trackBegins(std::uint64_t key, std::uint64_t inside) override;
    void trackHas(const Pair& pair) override;
    void trackEnds(const Span& whole) override;

private:
    /// Songs of one album follow each other: a text like the last one is kept once.
    class Repeated
    {
    public:
        const char* keep(std::string_view text, TextArena& texts);

    private:
        std::string_view m_last;
    };

    /// The record's own may lie at places that are no multiple of their size.
    struct Numbers
    {
        std::uint64_t size;
        std::uint64_t duration;
        std::uint64_t trackNumber;
        std::uint64_t year;
        std::uint64_t bitRate;
        std::uint64_t sampleRate;
    };

    std::uint64_t* numberFor(Field field);
    void takeKind(std::string_view kind);
    void applyChange(const TrackEdit& edit);

    TrackStore& m_store;
    const TrackChanges& m_changes;
    iTunesTrackRecord m_record = {};
    Numbers m_numbers = {};
    std::uint64_t m_id = 0;
    bool m_remote = false;
    Repeated m_artist;
    Repeated m_album;
    Repeated m_genre;
    Repeated m_kind;
    const char* m_judgedKind = nullptr; ///< of this one is known whether it is one of no song
    bool m_judgedNoSong = false;
};
} // namespace itunes
