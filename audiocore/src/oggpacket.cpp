#include "oggpacket.h"

#include "checkedstream.h"

#include <algorithm>
#include <optional>

using audiocore::CheckedStream;
using audiocore::OggComment;
using TagLib::ByteVector;

namespace {
/// Goes through a stream packet by packet.
class PacketReader
{
public:
    PacketReader(CheckedStream& stream, long begin) : m_stream(stream), m_nextPage(begin) {}

    /// Nothing at the end of the stream, or when the packet is larger.
    std::optional<OggComment> next(long mostBytes)
    {
        OggComment packet;
        unsigned int size = 0;
        for (bool ended = false; !ended;) {
            if (m_segment >= m_sizes.size() && !openPage())
                return std::nullopt;
            packet.pieces.emplace_back(size, m_place);
            const unsigned int piece = takePiece(ended);
            size += piece;
            m_place += long(piece);
            if (long(size) > mostBytes)
                return std::nullopt;
        }
        gather(packet, size);
        return packet;
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
    void gather(OggComment& packet, unsigned int size)
    {
        packet.bytes.resize(size);
        for (std::size_t i = 0; i < packet.pieces.size(); ++i) {
            const auto& [begin, place] = packet.pieces[i];
            const unsigned int end = i + 1 < packet.pieces.size() ? packet.pieces[i + 1].first : size;
            m_stream.seek(place);
            const ByteVector piece = m_stream.readBlock(end - begin);
            std::copy(piece.begin(), piece.end(), packet.bytes.begin() + begin);
        }
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

/// Takes what is in front of the comment off a packet.
OggComment withoutHead(const OggComment& packet, unsigned int head)
{
    OggComment comment;
    comment.bytes = packet.bytes.mid(head);
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
    constexpr unsigned int flacHead = 4;
    constexpr int kindOfBlock = 0x7F;
    constexpr int commentBlock = 4;
    std::vector<OggComment> comments;
    PacketReader reader(stream, begin);
    const std::optional<OggComment> first = reader.next(mostBytes);
    const bool flac = first && first->bytes.startsWith("\x7F"
                                                       "FLAC");
    const bool speex = first && first->bytes.startsWith("Speex   ");
    while (const std::optional<OggComment> packet = first ? reader.next(mostBytes) : std::nullopt) {
        const ByteVector& bytes = packet->bytes;
        mostBytes -= long(bytes.size());
        if (bytes.startsWith("\x03vorbis"))
            comments.push_back(withoutHead(*packet, 7));
        else if (bytes.startsWith("OpusTags"))
            comments.push_back(withoutHead(*packet, 8));
        else if (flac && bytes.size() > flacHead && (bytes.data()[0] & kindOfBlock) == commentBlock)
            comments.push_back(withoutHead(*packet, flacHead));
        else if (speex)
            comments.push_back(*packet);
        const bool last = bytes.isEmpty() || (bytes.data()[0] & ~kindOfBlock) != 0;
        if (!flac || last)
            break;
    }
    return comments;
}
