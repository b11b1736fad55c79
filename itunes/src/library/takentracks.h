#pragma once

#include "base/failure.h"
#include "library/librarycontents.h"
#include "library/libraryediting.h"
#include "library/librarysplices.h"
#include "library/trackedit.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace base {
class FileBytes;
}

namespace itunes {
/// What taking tracks out of a library takes: their entries and their places in the playlists, byte for byte,
/// with where they stood, and what tells the library of before from any other. Made before anything is taken
/// out, it puts the tracks back in any later run.
class TakenTracks
{
public:
    /// Of a library that holds each of the tracks once; nothing, with the reason, of any other.
    static std::optional<TakenTracks> find(const base::FileBytes& library, const TrackSet& tracks,
                                           base::Failure& failure);
    /// As bytes, and from them: nothing for what is none.
    std::string bytes() const;
    static std::optional<TakenTracks> fromBytes(const std::string& bytes);

    /// What puts those tracks back that a library does not hold which holds all else as it was before.
    std::vector<Splice> splicesFor(const LibraryContents& now) const;
    /// The library of before.
    const ContentMark& whole() const { return m_whole; }

private:
    struct Piece
    {
        std::uint64_t place; ///< in the library of before, as ByteSource gives it
        std::uint64_t track;
        bool isEntry;
        std::string text;
    };

    bool takeTexts(const base::FileBytes& library, const std::vector<Splice>& splices);

    ContentMark m_whole;
    std::vector<Piece> m_pieces; ///< in the file's order
};
} // namespace itunes
