#pragma once

#include <taglib/tbytevectorlist.h>

#include <cstdint>

namespace TagLib {
class File;
}

// What the tables of a track in an MP4 file say. Each is read once at most, in pieces, and no further than
// its atom goes, whatever it claims; null stands for an atom that the file does not have.
namespace audiocore {
struct Mp4Atom;
class Mp4Atoms;

/// The sum of all durations of a "stts", in the track's unit.
std::int64_t totalDuration(TagLib::File& file, const Mp4Atom* durations);
/// The sum of all sizes of a "stsz"; zero where they are not given one by one.
std::int64_t totalSize(TagLib::File& file, const Mp4Atom* sizes);
/// The first frames of a track that has these tables, a few of those that lie one behind the other.
TagLib::ByteVectorList firstFrames(TagLib::File& file, const Mp4Atoms& atoms, const Mp4Atom& tables);
/// Where the last fragment of the track ends, in the track's unit; zero where no fragment says when it
/// begins.
std::int64_t endOfFragments(TagLib::File& file, const Mp4Atoms& atoms, std::uint32_t track);
} // namespace audiocore
