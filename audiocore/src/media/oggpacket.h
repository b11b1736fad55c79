#pragma once

#include <taglib/tbytevector.h>

#include <utility>
#include <vector>

namespace audiocore {
class CheckedStream;

/// The bytes of a comment at the beginning of an Ogg stream, gathered from the pages that they lie on.
struct OggComment
{
    TagLib::ByteVector bytes;
    /// Where in the file the byte of this number lies.
    long placeOf(unsigned int byte) const;

    std::vector<std::pair<unsigned int, long>> pieces; ///< number of the first byte, and its place
};

/// All comments that the stream's header packets hold, none of them above `mostBytes`.
std::vector<OggComment> oggComments(CheckedStream& stream, long begin, long mostBytes);
} // namespace audiocore
