#include "media/oggpacket.h"

#include "media/checkedstream.h"

#include <algorithm>

using audiocore::OggPacket;
using audiocore::OggPackets;
using audiocore::OggPage;
using TagLib::ByteVector;

std::optional<OggPage> OggPage::at(CheckedStream& stream, long place)
{
    constexpr unsigned int headSize = 27;
    constexpr unsigned int mostSegments = 255;
    constexpr char firstOfStream = 2;
    const ByteVector head = stream.readAt(place, headSize + mostSegments);
    if (head.size() < headSize || !head.startsWith("OggS") || head.data()[4] != 0)
        return std::nullopt;
    const char* const bytes = head.data();
    OggPage page;
    page.sizes = head.mid(headSize, static_cast<unsigned char>(bytes[headSize - 1]));
    page.place = place;
    page.body = place + long(headSize) + long(page.sizes.size());
    page.end = page.body;
    for (const char size : page.sizes)
        page.end += static_cast<unsigned char>(size);
    page.beginsStream = (bytes[5] & firstOfStream) != 0;
    page.position = head.toLongLong(6u, false);
    page.serial = head.toUInt(14u, false);
    return page;
}

std::optional<OggPacket> OggPackets::next(long mostBytes)
{
    OggPacket packet;
    for (bool ended = false; !ended;) {
        if (m_segment >= m_page.sizes.size() && !openPage())
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

ByteVector OggPackets::bytesOf(const OggPacket& packet, unsigned int from, unsigned int to)
{
    from = std::min(from, packet.size);
    to = std::min(to, packet.size);
    const unsigned int size = to - from;
    ByteVector bytes =
        packet.pieces.size() > 1 ? ByteVector(size) : readAt(packet.pieces.front().second + long(from), size);
    if (bytes.size() < size)
        bytes.resize(size);
    for (std::size_t i = 0; packet.pieces.size() > 1 && i < packet.pieces.size(); ++i)
        gather(bytes, packet, i, from);
    return bytes;
}

/// The next one of the stream, past those of others.
bool OggPackets::openPage()
{
    constexpr int mostOthers = 1000;
    while (m_othersPassed < mostOthers) {
        const std::optional<OggPage> page = OggPage::at(m_stream, m_nextPage);
        if (!page)
            return false;
        m_nextPage = page->end;
        if (page->serial == m_serial) {
            m_page = *page;
            m_place = page->body;
            m_segment = 0;
            return true;
        }
        ++m_othersPassed;
    }
    return false;
}

/// Copies what the piece has of the bytes that begin at `from`.
void OggPackets::gather(ByteVector& bytes, const OggPacket& packet, std::size_t piece, unsigned int from)
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

ByteVector OggPackets::readAt(long place, unsigned int size)
{
    return m_stream.readAt(place, size);
}

/// What the page has of the packet.
unsigned int OggPackets::takePiece(bool& ended)
{
    constexpr unsigned int goesOn = 255;
    unsigned int bytes = 0;
    while (m_segment < m_page.sizes.size() && !ended) {
        const unsigned int size = static_cast<unsigned char>(m_page.sizes.data()[m_segment++]);
        ended = size < goesOn;
        bytes += size;
    }
    return bytes;
}
