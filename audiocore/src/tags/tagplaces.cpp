#include "tags/tagplaces.h"

#include "media/oggpacket.h"
#include "media/wavfile.h"
#include "tags/apebytes.h"
#include "tags/commentbytes.h"
#include "tags/fieldlist.h"
#include "tags/id3v2frames.h"
#include "tags/mediafile.h"
#include "tags/taglimits.h"

#include <taglib/mpegfile.h>
#include <taglib/oggfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/opusfile.h>

using audiocore::CommentPacket;
using audiocore::FlacBlocks;
using audiocore::Place;
using TagLib::ByteVector;

namespace {
constexpr long id3v1Size = 128;
constexpr int paddingBlock = 1;
constexpr int commentBlock = 4;
constexpr int pictureBlock = 6;
constexpr int kindOfBlock = 0x7F;
constexpr char lastBlock = char(0x80);
constexpr int mostBlocks = 10000;
constexpr unsigned int blockHead = 4;
constexpr unsigned int largestBlock = (1u << 24) - 1;

ByteVector read(TagLib::File& file, long begin, unsigned long size)
{
    file.seek(begin);
    return file.readBlock(size);
}

ByteVector headOfBlock(int type, unsigned int size)
{
    ByteVector head = ByteVector::fromUInt(size);
    head[0] = char(type);
    return head;
}
} // namespace

Place audiocore::findId3v2(TagLib::File& file)
{
    const auto sizeAt = [&file](long position) {
        const ByteVector header = read(file, position, id3v2::headerSize);
        const std::optional<id3v2::TagSize> size = id3v2::sizeOfTag(id3v2::viewOf(header));
        return size ? size->whole() : 0;
    };
    long begin = 0;
    unsigned int size = sizeAt(begin);
    auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file);
    if (size == 0 && mpeg && mpeg->hasID3v2Tag()) {
        // Behind some rubbish.
        begin = std::max(long(file.find("ID3")), 0L);
        size = sizeAt(begin);
    }
    return size > 0 ? Place{begin, std::min(long(size), long(file.length()) - begin)} : Place();
}

Place audiocore::findId3v1(TagLib::File& file)
{
    const long begin = std::max(0L, long(file.length()) - id3v1Size);
    const ByteVector tag = read(file, begin, id3v1Size);
    if (long(tag.size()) == id3v1Size && tag.startsWith("TAG"))
        return {begin, id3v1Size};
    return {long(file.length()), 0};
}

Place audiocore::findApe(TagLib::File& file)
{
    const long end = findId3v1(file).begin;
    const long footer = end - long(ApeBytes::footerSize);
    if (footer < 0)
        return {end, 0};
    const long size = long(ApeBytes::sizeByFooter(read(file, footer, ApeBytes::footerSize)));
    return size <= end ? Place{end - size, size} : Place{end, 0};
}

std::optional<ByteVector> audiocore::bytesAt(TagLib::File& file, const Place& place)
{
    if (place.size > mostTagBytesWritten)
        return std::nullopt;
    return place.size > 0 ? read(file, place.begin, static_cast<unsigned long>(place.size)) : ByteVector();
}

void audiocore::putAt(TagLib::File& file, const Place& place, const ByteVector& bytes)
{
    if (place.size > 0 || !bytes.isEmpty())
        file.insert(bytes, static_cast<unsigned long>(place.begin), static_cast<unsigned long>(place.size));
}

std::optional<ByteVector> audiocore::id3v2Bytes(TagLib::File& file)
{
    auto* wav = dynamic_cast<WavFile*>(&file);
    if (!wav)
        return bytesAt(file, findId3v2(file));
    const int chunk = wav->id3v2Chunk();
    if (chunk < 0)
        return ByteVector();
    if (long(wav->chunkDataSize(unsigned(chunk))) > mostTagBytesWritten)
        return std::nullopt;
    return wav->chunkData(unsigned(chunk));
}

ByteVector audiocore::commentBytes(const MediaFile& media)
{
    ByteVector comment;
    if (dynamic_cast<TagLib::Ogg::File*>(media.file.get())) {
        const std::vector<OggComment> comments = oggComments(*media.stream, media.audioBegin, mostTagBytes);
        comment = comments.empty() ? ByteVector() : comments.front().bytes;
    } else {
        comment = FlacBlocks::commentOnly(*media.file, findId3v2(*media.file).size);
    }
    CommentBytes::boundFields(comment);
    return comment;
}

std::optional<FlacBlocks> FlacBlocks::read(TagLib::File& file, long begin)
{
    FlacBlocks blocks;
    long position = begin + 4; // "fLaC"
    for (bool last = false; !last;) {
        const ByteVector head = ::read(file, position, blockHead);
        if (head.size() < blockHead || blocks.m_blocks.size() >= size_t(mostBlocks))
            return std::nullopt;
        const unsigned int size = head.toUInt(1, 3, true);
        const int type = head.data()[0] & kindOfBlock;
        last = (head.data()[0] & lastBlock) != 0;
        if (position - begin + long(size) > mostTagBytesWritten)
            return std::nullopt;
        if (type != paddingBlock)
            blocks.m_blocks.push_back({type, ::read(file, position + long(blockHead), size)});
        if (type != paddingBlock && blocks.m_blocks.back().bytes.size() != size)
            return std::nullopt;
        position += long(blockHead + size);
    }
    if (position > file.length())
        return std::nullopt;
    blocks.m_place = {begin + 4, position - begin - 4};
    return blocks;
}

ByteVector FlacBlocks::commentOnly(TagLib::File& file, long begin)
{
    long position = begin + 4;
    for (int i = 0; i < mostBlocks; ++i) {
        const ByteVector head = ::read(file, position, blockHead);
        if (head.size() < blockHead)
            break;
        if ((head.data()[0] & kindOfBlock) == commentBlock)
            return ::read(file, position + long(blockHead), head.toUInt(1, 3, true));
        if (head.data()[0] & lastBlock)
            break;
        position += long(blockHead + head.toUInt(1, 3, true));
    }
    return ByteVector();
}

ByteVector FlacBlocks::comment() const
{
    for (const Block& block : m_blocks)
        if (block.type == commentBlock)
            return block.bytes;
    return ByteVector();
}

void FlacBlocks::setComment(const ByteVector& bytes)
{
    for (Block& block : m_blocks) {
        if (block.type == commentBlock) {
            block.bytes = bytes;
            return;
        }
    }
    m_blocks.push_back({commentBlock, bytes});
}

void FlacBlocks::setPicture(const ByteVector& bytes)
{
    std::optional<Block> picture;
    if (!bytes.isEmpty())
        picture = Block{pictureBlock, bytes};
    const auto isOld = [](const Block& block) { return block.type == pictureBlock; };
    replaceFields(m_blocks, isOld, picture);
}

bool FlacBlocks::write(TagLib::File& file) const
{
    ByteVector bytes;
    for (const Block& block : m_blocks) {
        if (block.bytes.size() > largestBlock || bytes.size() > (1u << 30))
            return false;
        bytes.append(headOfBlock(block.type, block.bytes.size()));
        bytes.append(block.bytes);
    }
    const unsigned int needed = bytes.size() + blockHead;
    const unsigned int padding = paddedSize(needed, unsigned(m_place.size)) - needed;
    ByteVector head = headOfBlock(paddingBlock, padding);
    head[0] = char(head[0] | lastBlock);
    bytes.append(head);
    bytes.append(ByteVector(padding, '\0'));
    putAt(file, m_place, bytes);
    return true;
}

std::optional<CommentPacket> CommentPacket::find(TagLib::Ogg::File& file)
{
    constexpr unsigned int mostBlocks = 100;
    CommentPacket found;
    found.isFlacBlock = dynamic_cast<TagLib::Ogg::FLAC::File*>(&file) != nullptr;
    found.head = dynamic_cast<TagLib::Ogg::Opus::File*>(&file) ? "OpusTags" : "\x03vorbis";
    ByteVector packet = file.packet(found.index);
    while (found.isFlacBlock && !packet.isEmpty() && (packet.data()[0] & kindOfBlock) != commentBlock &&
           found.index < mostBlocks)
        packet = file.packet(++found.index);
    if (found.isFlacBlock)
        found.head = packet.mid(0, blockHead);
    if (packet.isEmpty() || !packet.startsWith(found.head) ||
        (found.isFlacBlock && (packet.data()[0] & kindOfBlock) != commentBlock))
        return std::nullopt;
    found.comment = packet.mid(found.head.size());
    return found;
}

bool CommentPacket::write(TagLib::Ogg::File& file)
{
    if (isFlacBlock && comment.size() > largestBlock)
        return false;
    if (isFlacBlock)
        head = headOfBlock(head.data()[0], comment.size());
    ByteVector packet = head;
    file.setPacket(index, packet.append(comment));
    // The base's: the file's own one would write the comment anew from its own reading.
    return file.TagLib::Ogg::File::save();
}
