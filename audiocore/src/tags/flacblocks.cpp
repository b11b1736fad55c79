#include "tags/flacblocks.h"

#include "media/flacblock.h"
#include "tags/fieldlist.h"
#include "tags/taglimits.h"

#include <taglib/tfile.h>

#include <cstddef>

using audiocore::FlacBlocks;
using TagLib::ByteVector;

namespace {
constexpr std::size_t mostBlocks = 10000;
} // namespace

std::optional<FlacBlocks> FlacBlocks::read(TagLib::File& file, long begin)
{
    FlacBlocks blocks;
    long position = begin + 4; // "fLaC"
    for (bool last = false; !last;) {
        const ByteVector head = readAt(file, position, flac::headSize);
        if (head.size() < flac::headSize || blocks.m_blocks.size() >= mostBlocks)
            return std::nullopt;
        const unsigned int size = flac::sizeOf(head);
        const int type = flac::kindOf(head);
        last = flac::isLast(head);
        if (position - begin + long(size) > mostTagBytesWritten)
            return std::nullopt;
        if (type != flac::Padding)
            blocks.m_blocks.push_back({type, readAt(file, position + long(flac::headSize), size)});
        if (type != flac::Padding && blocks.m_blocks.back().bytes.size() != size)
            return std::nullopt;
        position += long(flac::headSize + size);
    }
    if (position > file.length())
        return std::nullopt;
    blocks.m_place = {begin + 4, position - begin - 4};
    return blocks;
}

ByteVector FlacBlocks::commentOnly(TagLib::File& file, long begin)
{
    long position = begin + 4;
    for (std::size_t i = 0; i < mostBlocks; ++i) {
        const ByteVector head = readAt(file, position, flac::headSize);
        if (head.size() < flac::headSize)
            break;
        if (flac::kindOf(head) == flac::Comment)
            return readAt(file, position + long(flac::headSize), flac::sizeOf(head));
        if (flac::isLast(head))
            break;
        position += long(flac::headSize + flac::sizeOf(head));
    }
    return ByteVector();
}

ByteVector FlacBlocks::comment() const
{
    for (const Block& block : m_blocks)
        if (block.type == flac::Comment)
            return block.bytes;
    return ByteVector();
}

void FlacBlocks::setComment(const ByteVector& bytes)
{
    for (Block& block : m_blocks) {
        if (block.type == flac::Comment) {
            block.bytes = bytes;
            return;
        }
    }
    m_blocks.push_back({flac::Comment, bytes});
}

void FlacBlocks::setPicture(const ByteVector& bytes)
{
    std::optional<Block> picture;
    if (!bytes.isEmpty())
        picture = Block{flac::Picture, bytes};
    const auto isOld = [](const Block& block) { return block.type == flac::Picture; };
    replaceFields(m_blocks, isOld, picture);
}

bool FlacBlocks::write(TagLib::File& file) const
{
    ByteVector bytes;
    for (const Block& block : m_blocks) {
        if (block.bytes.size() > flac::largestBlock || bytes.size() > (1u << 30))
            return false;
        bytes.append(flac::headOf(block.type, block.bytes.size()));
        bytes.append(block.bytes);
    }
    const unsigned int needed = bytes.size() + flac::headSize;
    const unsigned int padding = paddedSize(needed, unsigned(m_place.size)) - needed;
    ByteVector head = flac::headOf(flac::Padding, padding);
    head[0] = char(head[0] | flac::lastBlock);
    bytes.append(head);
    bytes.append(ByteVector(padding, '\0'));
    putAt(file, m_place, bytes);
    return true;
}
