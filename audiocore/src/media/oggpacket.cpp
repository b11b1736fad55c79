#include "media/oggpacket.h"

#include "media/checkedstream.h"
#include "media/flacblock.h"

#include <algorithm>
#include <optional>

using audiocore::CheckedStream;
using audiocore::OggComment;
using TagLib::ByteVector;

namespace {
/// Where a packet lies.
struct Packet
{
    unsigned int size = 0;
    std::vector<std::pair<unsigned int, long>> pieces; ///< as those of a comment
};

/// Goes through a stream packet by packet.
class PacketReader
{
public:
    PacketReader(CheckedStream& stream, long begin) : m_stream(stream), m_nextPage(begin) {}

    /// Nothing at the end of the stream, or when the packet is larger.
    std::optional<Packet> next(long mostBytes)
    {
        Packet packet;
        for (bool ended = false; !ended;) {
            if (m_segment >= m_sizes.size() && !openPage())
                return std::nullopt;
            packet.pieces.emplace_back(packet.size, m_place);
            const unsigned int piece = takePiece(ended);
            packet.size += piece;
            m_place += long(piece);
            if (long(packet.size) > mostBytes)
                return std::nullopt;
        }
        return packet;
    }
    /// The packet's bytes from one to before another; zeros for those that are not in the file.
    ByteVector bytesOf(const Packet& packet, unsigned int from, unsigned int to)
    {
        from = std::min(from, packet.size);
        to = std::min(to, packet.size);
        const unsigned int size = to - from;
        ByteVector bytes = packet.pieces.size() > 1 ? ByteVector(size)
                                                    : readAt(packet.pieces.front().second + long(from), size);
        if (bytes.size() < size)
            bytes.resize(size);
        for (std::size_t i = 0; packet.pieces.size() > 1 && i < packet.pieces.size(); ++i)
            gather(bytes, packet, i, from);
        return bytes;
    }

private:
    bool openPage()
    {
        constexpr unsigned int headSize = 27;
        m_stream.seek(m_nextPage);
        const ByteVector head = m_stream.readBlock(headSize);
        if (head.size() < headSize || !head.startsWith("OggS"))
            return false;
        m_sizes = m_stream.readBlock(static_cast<unsigned char>(head.data()[headSize - 1]));
        m_segment = 0;
        m_place = m_nextPage + long(headSize) + long(m_sizes.size());
        m_nextPage = m_place;
        for (const char size : m_sizes)
            m_nextPage += static_cast<unsigned char>(size);
        return true;
    }
    /// Copies what the piece has of the bytes that begin at `from`.
    void gather(ByteVector& bytes, const Packet& packet, std::size_t piece, unsigned int from)
    {
        const bool last = piece + 1 == packet.pieces.size();
        const auto [pieceBegin, place] = packet.pieces[piece];
        const unsigned int begin = std::max(pieceBegin, from);
        const unsigned int end =
            std::min(last ? packet.size : packet.pieces[piece + 1].first, from + bytes.size());
        if (begin >= end)
            return;
        const ByteVector read = readAt(place + long(begin - pieceBegin), end - begin);
        std::copy(read.begin(), read.end(), bytes.begin() + (begin - from));
    }
    ByteVector readAt(long place, unsigned int size)
    {
        m_stream.seek(place);
        return m_stream.readBlock(size);
    }
    /// What the page has of the packet.
    unsigned int takePiece(bool& ended)
    {
        constexpr unsigned int goesOn = 255;
        unsigned int bytes = 0;
        while (m_segment < m_sizes.size() && !ended) {
            const unsigned int size = static_cast<unsigned char>(m_sizes.data()[m_segment++]);
            ended = size < goesOn;
            bytes += size;
        }
        return bytes;
    }

    CheckedStream& m_stream;
    long m_nextPage;
    long m_place = 0;
    ByteVector m_sizes; ///< of the page's segments
    unsigned int m_segment = 0;
};

/// What the packet has behind its head.
OggComment commentOf(PacketReader& reader, const Packet& packet, unsigned int head)
{
    OggComment comment;
    comment.bytes = reader.bytesOf(packet, head, packet.size);
    for (const auto& [number, place] : packet.pieces)
        comment.pieces.emplace_back(number > head ? number - head : 0,
                                    number > head ? place : place + long(head - number));
    return comment;
}
} // namespace

long OggComment::placeOf(unsigned int byte) const
{
    auto piece = pieces.rbegin();
    while (piece != pieces.rend() && piece->first > byte)
        ++piece;
    return piece == pieces.rend() ? -1 : piece->second + long(byte - piece->first);
}

std::vector<OggComment> audiocore::oggComments(CheckedStream& stream, long begin, long mostBytes)
{
    constexpr unsigned int magic = 8;
    std::vector<OggComment> comments;
    PacketReader reader(stream, begin);
    const std::optional<Packet> first = reader.next(mostBytes);
    if (!first)
        return comments;
    const ByteVector kind = reader.bytesOf(*first, 0, magic);
    const bool inFlac = kind.startsWith("\x7F"
                                        "FLAC");
    const bool speex = kind.startsWith("Speex   ");
    while (const std::optional<Packet> packet = reader.next(mostBytes)) {
        const ByteVector head = reader.bytesOf(*packet, 0, magic);
        mostBytes -= long(packet->size);
        if (head.startsWith("\x03vorbis"))
            comments.push_back(commentOf(reader, *packet, 7));
        else if (head.startsWith("OpusTags"))
            comments.push_back(commentOf(reader, *packet, magic));
        else if (inFlac && packet->size > flac::headSize && flac::kindOf(head) == flac::Comment)
            comments.push_back(commentOf(reader, *packet, flac::headSize));
        else if (speex)
            comments.push_back(commentOf(reader, *packet, 0));
        if (!inFlac || head.isEmpty() || flac::isLast(head))
            break;
    }
    return comments;
}
