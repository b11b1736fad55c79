#pragma once

#include <cstdint>

namespace TagLib {
class File;
}

namespace audiocore {
class Mp4Atoms;

/// The largest place and size that four bytes can tell.
constexpr std::int64_t mostInFourBytes = 0xFFFFFFFF;

/// Adds to all places that an MP4 file names and that are not before `from`, in the file as it is before its
/// bytes move. False when a table is damaged or has no room for its new numbers; the file is damaged then.
bool moveMp4Places(TagLib::File& file, const Mp4Atoms& atoms, std::int64_t from, std::int64_t by);
} // namespace audiocore
