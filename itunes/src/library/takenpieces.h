#pragma once

#include "base/platform.h"
#include "library/librarycontents.h"
#include "library/librarysplices.h"
#include "library/trackedit.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace itunes {
/// So much is kept of what was taken out, and no more.
constexpr std::size_t mostTakenBytes = std::size_t(64) * 1024 * 1024;

/// What our own writings took out of the library file, so that it can be put back: the entries of tracks and
/// their places in the playlists, byte for byte, with where they belong in the file as it is now. That is
/// known as long as nobody else writes the file. When there is too much of it, what was taken out first goes.
/// Calls from one thread at a time.
class TakenPieces
{
public:
    /// The file in this state has everything: nothing was taken out of it yet.
    void begin(const base::FileState& state);
    void forget();

    /// We wrote the file anew, with the splices; what they took out moves here.
    void follow(const base::FileState& before, std::vector<Splice>& splices, const LibraryContents& after);
    /// We put the pieces of these tracks back.
    void putBack(const TrackSet& tracks, const LibraryContents& after);

    /// Whether nobody else wrote the file until then.
    bool isGoodFor(const base::FileState& now) const { return m_isKnown && m_state == now; }
    /// What puts the tracks back, in the file's order; empty when the entry of one is not there.
    std::vector<Splice> splicesFor(const TrackSet& tracks) const;
    /// Of the file as it is now.
    std::uint64_t tracks() const { return m_tracks; }
    /// That all pieces take.
    std::size_t bytes() const { return m_bytes; }

private:
    struct Piece
    {
        std::uint64_t place; ///< bytes of the file as it is now; several at one place have an order
        std::uint64_t track;
        bool isEntry;
        unsigned writing; ///< that took it out
        std::string text;
    };

    static std::size_t bytesOf(const Piece& piece) { return sizeof piece + piece.text.size(); }
    void makeRoom();

    bool m_isKnown = false;
    base::FileState m_state;
    std::uint64_t m_tracks = 0;
    std::vector<Piece> m_pieces; ///< in the file's order
    std::size_t m_bytes = 0;
    unsigned m_writings = 0;
};
} // namespace itunes
