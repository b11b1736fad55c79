#include "library/takenpieces.h"

#include <algorithm>
#include <utility>

using itunes::Splice;
using itunes::TakenPieces;

void TakenPieces::begin(const base::FileState& state)
{
    forget();
    m_isKnown = true;
    m_state = state;
}

void TakenPieces::forget()
{
    m_isKnown = false;
    m_pieces = {};
    m_bytes = 0;
}

void TakenPieces::follow(const base::FileState& before, std::vector<Splice>& splices,
                         const LibraryContents& after)
{
    if (!isGoodFor(before)) {
        forget();
        return;
    }
    m_state = after.state;
    m_tracks = after.tracks;
    std::vector<Piece> pieces;
    std::uint64_t shift = 0; // of what stands behind, to either side
    auto former = m_pieces.begin();
    const auto moveUpTo = [&](std::uint64_t place) {
        for (; former != m_pieces.end() && former->place <= place; ++former) {
            pieces.push_back(std::move(*former));
            pieces.back().place += shift;
        }
    };
    for (Splice& splice : splices) {
        moveUpTo(splice.old.begin);
        if (!splice.taken.empty()) {
            pieces.push_back({splice.old.begin + shift, splice.track, splice.isEntry, m_writings,
                              std::move(splice.taken)});
            m_bytes += bytesOf(pieces.back());
        }
        shift += splice.text.size() - (splice.old.end - splice.old.begin);
    }
    moveUpTo(UINT64_MAX);
    m_pieces = std::move(pieces);
    ++m_writings;
    makeRoom();
}

/// Pieces of one writing go together: half of them bring no track back whole.
void TakenPieces::makeRoom()
{
    while (m_bytes > mostTakenBytes) {
        const auto earlier = [](const Piece& a, const Piece& b) { return a.writing < b.writing; };
        const unsigned first = std::min_element(m_pieces.begin(), m_pieces.end(), earlier)->writing;
        const auto stays = [first](const Piece& piece) { return piece.writing != first; };
        const auto gone = std::stable_partition(m_pieces.begin(), m_pieces.end(), stays);
        for (auto piece = gone; piece != m_pieces.end(); ++piece)
            m_bytes -= bytesOf(*piece);
        m_pieces.erase(gone, m_pieces.end());
    }
}

void TakenPieces::putBack(const TrackSet& tracks, const LibraryContents& after)
{
    m_state = after.state;
    m_tracks = after.tracks;
    std::vector<Piece> left;
    std::uint64_t shift = 0;
    for (Piece& piece : m_pieces) {
        if (tracks.count(piece.track) > 0) {
            shift += piece.text.size();
            m_bytes -= bytesOf(piece);
            continue;
        }
        left.push_back(std::move(piece));
        left.back().place += shift;
    }
    m_pieces = std::move(left);
}

std::vector<Splice> TakenPieces::splicesFor(const TrackSet& tracks) const
{
    std::vector<Splice> splices;
    TrackSet whole;
    for (const Piece& piece : m_pieces) {
        if (tracks.count(piece.track) == 0)
            continue;
        splices.push_back({{piece.place, piece.place}, piece.text, piece.track, piece.isEntry});
        if (piece.isEntry)
            whole.insert(piece.track);
    }
    return whole.size() == tracks.size() ? std::move(splices) : std::vector<Splice>();
}
