#include "tags/tagscreen.h"

#include "tags/apebytes.h"
#include "tags/id3v2frames.h"
#include "tags/id3v2screen.h"
#include "tags/taglimits.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

using audiocore::TagScreen;
using TagLib::ByteVector;

namespace {
/// What the library reads in pieces up to this size it looks through and does not keep.
constexpr unsigned long pieceLookedThrough = 1024;
constexpr unsigned int apeHead = audiocore::ApeBytes::footerSize;
} // namespace

TagScreen::TagScreen() : TagScreen(std::numeric_limits<long>::max()) {}

TagScreen::TagScreen(long tagsEnd) : m_bytesLeft(mostTagBytes), m_tagsEnd(tagsEnd) {}

ByteVector TagScreen::read(CheckedStream& stream, unsigned long length)
{
    const long position = stream.tell();
    if (m_body && m_expected.position == position && m_expected.length == length)
        return std::exchange(m_body, nullptr)(stream, m_expected);
    ByteVector block = readPlain(stream, length);
    show(block, position);
    return block;
}

void TagScreen::show(ByteVector& block, long position)
{
    const auto id3v2Tag = block.size() == id3v2::headerSize ? id3v2::sizeOfTag(id3v2::viewOf(block))
                                                            : std::optional<id3v2::TagSize>();
    if (id3v2Tag) {
        expect({position + long(id3v2::headerSize), id3v2Tag->body},
               [this](CheckedStream& stream, const Piece& body) { return readId3v2(stream, body); });
        m_id3v2Head = block;
        block[5] = char(block[5] & id3v2::withFooter); // the body is shown without what the other flags say
    } else if (block.size() == apeHead && id3v2::viewOf(block).substr(0, 8) == "APETAGEX") {
        const unsigned int size = std::max(block.toUInt(12, false), apeHead);
        expect({position + long(apeHead) - long(size), size - apeHead},
               [this](CheckedStream& stream, const Piece& body) { return readApe(stream, body); });
    }
}

void TagScreen::expect(const Piece& body, BodyReader reader)
{
    m_expected = body;
    m_body = std::move(reader);
}

ByteVector TagScreen::readPlain(CheckedStream& stream, unsigned long length)
{
    if (length <= pieceLookedThrough)
        return stream.readUnscreened(length);
    return readLarge(stream, length);
}

ByteVector TagScreen::readLarge(CheckedStream& stream, unsigned long length)
{
    ByteVector block = stream.readUnscreened(std::min(length, static_cast<unsigned long>(m_bytesLeft)));
    m_bytesLeft -= long(block.size());
    return block;
}

void TagScreen::limitRoom(long bytes)
{
    m_bytesLeft = std::min(m_bytesLeft, bytes);
}

ByteVector TagScreen::readApe(CheckedStream& stream, const Piece& body)
{
    return ApeBytes::shown(readPlain(stream, body.length));
}

ByteVector TagScreen::readId3v2(CheckedStream& stream, const Piece& tag)
{
    constexpr unsigned int behind =
        2 * id3v2::headerSize; // bytes that the library counts on behind the frames
    const long end = std::min(long(stream.length()), m_tagsEnd);
    const long left = std::max(0L, end - tag.position);
    const auto size = static_cast<unsigned int>(std::min(tag.length, static_cast<unsigned long>(left)));
    const auto part = [&](unsigned int position, unsigned int bytes) {
        stream.seek(tag.position + long(position));
        return readPlain(stream, bytes);
    };
    const bool whole = long(tag.length) + long(behind) <= m_bytesLeft;
    // Read together with room for what comes behind, which would take a copy else.
    ByteVector body =
        whole ? readPlain(stream, size + behind) : skimId3v2(m_id3v2Head, size, m_bytesLeft, part);
    if (whole && body.size() > size)
        body.resize(size);
    if (whole)
        stream.seek(tag.position + long(body.size()));
    screenId3v2(m_id3v2Head, body);
    body.resize(body.size() + behind, '\0');
    return body;
}
