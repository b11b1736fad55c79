#pragma once

#include <taglib/tbytevector.h>

/// The heads of the blocks before the music of FLAC, in files of its own and in Ogg.
namespace audiocore::flac {
constexpr unsigned int headSize = 4;
constexpr unsigned int largestBlock = (1u << 24) - 1;
/// Where the block that describes the stream says its rate, its channels and the bits of a sample.
constexpr unsigned int ratesPlace = 10;
constexpr unsigned int ratesSize = 4;
constexpr char lastBlock = char(0x80);

enum Kind { StreamInfo = 0, Padding = 1, Comment = 4, Picture = 6 };

// Of a head of that size.
inline int kindOf(const TagLib::ByteVector& head)
{
    return head.data()[0] & 0x7F;
}
inline bool isLast(const TagLib::ByteVector& head)
{
    return (head.data()[0] & lastBlock) != 0;
}
inline unsigned int sizeOf(const TagLib::ByteVector& head)
{
    return head.toUInt(1, 3, true);
}

inline TagLib::ByteVector headOf(int kind, unsigned int size)
{
    TagLib::ByteVector head = TagLib::ByteVector::fromUInt(size);
    head[0] = char(kind);
    return head;
}
} // namespace audiocore::flac
