#include "tags/tagscreen.h"

#include "media/checkedstream.h"
#include "media/oggpacket.h"
#include "tags/apebytes.h"
#include "tags/commentbytes.h"
#include "tags/id3v2frames.h"
#include "tags/id3v2screen.h"
#include "tags/infobytes.h"
#include "tags/taglimits.h"

#include <algorithm>
#include <string_view>

using audiocore::TagScreen;
using TagLib::ByteVector;

namespace {
/// What the library reads in pieces up to this size it looks through and does not keep.
constexpr unsigned long pieceLookedThrough = 1024;
constexpr unsigned int apeHead = audiocore::ApeBytes::footerSize;
constexpr unsigned int flacHead = 4;
constexpr long headersBesideComment = 1024 * 1024;

enum FlacBlock { StreamInfo = 0, Padding = 1, Comment = 4, Picture = 6 };
constexpr int kindOfBlock = 0x7F;

/// Takes no memory: all that is read is asked.
bool begins(const ByteVector& block, std::string_view magic)
{
    return std::string_view(block.data(), block.size()).substr(0, magic.size()) == magic;
}

/// Whether the texts that a FLAC picture begins with are as long as texts may be.
bool isPlainPicture(const ByteVector& bytes)
{
    constexpr unsigned int mimePlace = 4;
    const unsigned int mime = bytes.toUInt(mimePlace);
    if (bytes.size() < 32 || mime > audiocore::longestText)
        return false;
    const unsigned int descriptionPlace = mimePlace + 4 + mime;
    return bytes.size() >= descriptionPlace + 4 && bytes.toUInt(descriptionPlace) <= audiocore::longestText;
}
} // namespace

TagScreen::TagScreen(AudioFormat format, CheckedStream& stream, long audioBegin, Purpose purpose)
    : m_format(format), m_purpose(purpose), m_bytesLeft(mostTagBytes), m_asfTextLeft(4ul * mostTextBytes)
{
    if (format == AUDIO_FORMAT_OGG)
        boundOggComments(stream, audioBegin);
}

ByteVector TagScreen::read(CheckedStream& stream, unsigned long length)
{
    if (isExpected(stream.tell(), length))
        return readBody(stream);
    return m_format == AUDIO_FORMAT_WMA ? readAsf(stream, length) : readPiece(stream, length);
}

ByteVector TagScreen::readPiece(CheckedStream& stream, unsigned long length)
{
    const long position = stream.tell();
    ByteVector block = readPlain(stream, length);
    patch(block, position);
    if (m_format == AUDIO_FORMAT_WAV && begins(block, "INFO"))
        block = InfoBytes::shown(block);
    else
        noteHead(block, position);
    return block;
}

bool TagScreen::isExpected(long position, unsigned long length) const
{
    return m_expected.body != Body::None && m_expected.position == position && m_expected.length == length;
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
    m_whole = m_whole && (block.size() == length || stream.tell() == stream.length());
    m_bytesLeft -= long(block.size());
    return block;
}

ByteVector TagScreen::readBody(CheckedStream& stream)
{
    const Expected expected = std::exchange(m_expected, Expected());
    if (expected.body == Body::FlacBlock)
        return readFlacBlock(stream, expected);
    if (expected.body == Body::Ape)
        return ApeBytes::shown(readPlain(stream, expected.length));
    return readId3v2(stream, expected);
}

ByteVector TagScreen::readId3v2(CheckedStream& stream, const Expected& expected)
{
    constexpr unsigned int behind =
        2 * id3v2::headerSize; // bytes that the library counts on behind the frames
    const long left = std::max(0L, stream.length() - expected.position);
    const auto size = static_cast<unsigned int>(std::min(expected.length, static_cast<unsigned long>(left)));
    const auto part = [&](unsigned int position, unsigned int bytes) {
        stream.seek(expected.position + long(position));
        return readPlain(stream, bytes);
    };
    const bool whole = long(expected.length) + long(behind) <= m_bytesLeft;
    // Read together with room for what comes behind, which would take a copy else.
    ByteVector body =
        whole ? readPlain(stream, size + behind) : skimId3v2(m_id3v2Head, size, m_bytesLeft, part);
    if (whole && body.size() > size)
        body.resize(size);
    if (whole)
        stream.seek(expected.position + long(body.size()));
    screenId3v2(m_id3v2Head, body);
    body.resize(body.size() + behind, '\0');
    return body;
}

/// The library takes a block of another size than its head says for the end of the file.
ByteVector TagScreen::readFlacBlock(CheckedStream& stream, const Expected& expected)
{
    const long end = expected.position + long(expected.length);
    if (expected.type != Padding || end > stream.length())
        return readAskedBlock(stream, expected);
    stream.seek(end);
    return ByteVector(static_cast<unsigned int>(expected.length), '\0');
}

ByteVector TagScreen::readAskedBlock(CheckedStream& stream, const Expected& expected)
{
    ByteVector block = readPlain(stream, expected.length);
    if (expected.type == Comment)
        CommentBytes::boundFields(block);
    if (expected.type == Picture && !isPlainPicture(block))
        block = ByteVector(block.size(), '\0');
    return block;
}

/// The library reads an attribute's kind, its size, its name and then its value. Only values that are bytes
/// may be large, as pictures are.
ByteVector TagScreen::readAsf(CheckedStream& stream, unsigned long length)
{
    constexpr unsigned int ofBytes = 1;
    constexpr unsigned long largestNumber = 16;
    const auto& [kind, size, name] = m_lastReads;
    const bool value = kind.size == 2 && size.size == 4;
    const bool bytes = value && kind.word == ofBytes;
    const bool keptAsItIs =
        m_purpose == Purpose::Writing && !value; // an object that the library does not know
    const bool text = length > largestNumber && !bytes && !keptAsItIs;
    ByteVector block = text ? readAsfText(stream, length) : readPlain(stream, length);
    m_lastReads = {size, name, {block.size(), block.size() == 2 ? block.toUShort(0u, false) : 0u}};
    return block;
}

ByteVector TagScreen::readAsfText(CheckedStream& stream, unsigned long length)
{
    const long left = std::max(0L, stream.length() - stream.tell());
    const long end = stream.tell() + long(std::min(length, static_cast<unsigned long>(left)));
    ByteVector block =
        readPlain(stream, std::min({length, static_cast<unsigned long>(longestText), m_asfTextLeft}));
    m_asfTextLeft -= block.size();
    m_whole = m_whole && (block.size() == length || stream.tell() == stream.length());
    if (stream.tell() != end)
        stream.seek(end);
    return block;
}

void TagScreen::noteHead(ByteVector& block, long position)
{
    const auto id3v2Tag = block.size() == id3v2::headerSize ? id3v2::sizeOfTag(id3v2::viewOf(block))
                                                            : std::optional<id3v2::TagSize>();
    if (id3v2Tag) {
        m_expected = {Body::Id3v2, position + long(id3v2::headerSize), id3v2Tag->body, 0};
        m_id3v2Head = block;
        block[5] = char(block[5] & id3v2::withFooter); // the body is shown without what the other flags say
    } else if (block.size() == apeHead && begins(block, "APETAGEX")) {
        const unsigned int size = std::max(block.toUInt(12, false), apeHead);
        m_expected = {Body::Ape, position + long(apeHead) - long(size), size - apeHead, 0};
    } else if (block.size() == flacHead && m_format == AUDIO_FORMAT_FLAC) {
        noteFlacHead(block, position);
    }
}

/// Blocks that we do not ask for are shown as padding, which the library does not keep.
void TagScreen::noteFlacHead(ByteVector& head, long position)
{
    const int type = head.data()[0] & kindOfBlock;
    const unsigned int size = head.toUInt(1, 3, true);
    const bool asked = type == StreamInfo || type == Comment || type == Picture;
    const bool shown = asked && long(size) <= m_bytesLeft;
    if (!shown)
        head[0] = char((head.data()[0] & ~kindOfBlock) | Padding);
    m_expected = {Body::FlacBlock, position + long(flacHead), size, shown ? type : Padding};
}

/// The library goes by the number of fields that a comment tells.
void TagScreen::boundOggComments(CheckedStream& stream, long audioBegin)
{
    // It takes the first page that it comes upon, be it inside a tag before the music.
    stream.seek(0);
    const int found =
        audioBegin > 0
            ? stream.readBlock(static_cast<unsigned long>(std::min(audioBegin, mostTagBytes))).find("OggS")
            : -1;
    for (const OggComment& comment : oggComments(stream, found < 0 ? audioBegin : found, mostTagBytes)) {
        const std::optional<CommentBytes::Bound> bound = CommentBytes::boundOf(comment.bytes);
        if (!bound)
            continue;
        for (unsigned int i = 0; i < bound->bytes.size(); ++i)
            m_patches.emplace_back(comment.placeOf(bound->place + i), bound->bytes.data()[i]);
        m_bytesLeft = std::min(m_bytesLeft, long(bound->end) + headersBesideComment);
    }
}

void TagScreen::patch(ByteVector& block, long position) const
{
    for (const auto& [place, byte] : m_patches)
        if (place >= position && place < position + long(block.size()))
            block[int(place - position)] = byte;
}
