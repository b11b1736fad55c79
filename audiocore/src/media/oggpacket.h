#pragma once

#include <taglib/tbytevector.h>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace audiocore {
class CheckedStream;

/// What the head of an Ogg page says.
struct OggPage
{
    long place = 0;
    long body = 0; ///< place of the first byte behind the head
    long end = 0;
    bool beginsStream = false;
    std::uint32_t serial = 0;  ///< of the stream that it belongs to
    std::int64_t position = 0; ///< of the last packet that ends on it, in samples; -1 when none does
    TagLib::ByteVector sizes;  ///< of its segments

    /// Nothing where no page is.
    static std::optional<OggPage> at(CheckedStream& stream, long place);
};

/// Where a packet lies in the file: the number of the first byte of each piece, and the piece's place.
struct OggPacket
{
    unsigned int size = 0;
    std::vector<std::pair<unsigned int, long>> pieces;
};

/// Goes through one of the streams of an Ogg file packet by packet.
class OggPackets
{
public:
    /// From the page at `begin` on; what lies there need not be of the stream.
    OggPackets(CheckedStream& stream, long begin, std::uint32_t serial)
        : m_stream(stream), m_serial(serial), m_nextPage(begin)
    {
    }

    /// Nothing at the end of the stream, or when the packet is larger.
    std::optional<OggPacket> next(long mostBytes);
    /// The packet's bytes from one to before another; zeros for those that are not in the file.
    TagLib::ByteVector bytesOf(const OggPacket& packet, unsigned int from, unsigned int to);
    /// On which the last packet ended.
    const OggPage& page() const { return m_page; }

private:
    bool openPage();
    void gather(TagLib::ByteVector& bytes, const OggPacket& packet, std::size_t piece, unsigned int from);
    TagLib::ByteVector readAt(long place, unsigned int size);
    unsigned int takePiece(bool& ended);

    CheckedStream& m_stream;
    const std::uint32_t m_serial;
    long m_nextPage;
    int m_othersPassed = 0;
    OggPage m_page;
    long m_place = 0;           ///< of the next piece
    unsigned int m_segment = 0; ///< of the page
};
} // namespace audiocore
