#pragma once

#include <taglib/tbytevector.h>

#include <optional>

namespace TagLib {
class File;
}

/// Where the tags stand that files of several formats have, for reading and writing their bytes.
namespace audiocore {
/// A part of a file; where there is no tag, the place where one would go and no bytes.
struct Place
{
    long begin = 0;
    long size = 0;
};

/// The tag that begins there; without one, the beginning of the file.
Place findId3v2(TagLib::File& file, long begin = 0);
Place findApe(TagLib::File& file);
Place findId3v1(TagLib::File& file);
TagLib::ByteVector readAt(TagLib::File& file, long begin, unsigned long size);
/// Nothing when that is more than we write of one tag.
std::optional<TagLib::ByteVector> bytesAt(TagLib::File& file, const Place& place);
void putAt(TagLib::File& file, const Place& place, const TagLib::ByteVector& bytes);
} // namespace audiocore
