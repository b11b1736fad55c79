#pragma once

#include <cstdint>

namespace TagLib {
class File;
}

namespace audiocore {
struct Mp4Atom;

/// What the entry that describes a track's sound says of it, whatever the sound is coded in.
struct Mp4Entry
{
    std::int64_t rate = 0; ///< hertz; zero where it says none
    std::int64_t bitsPerSecond = 0;
    /// What the entry itself says, whatever its decoder makes of the sound.
    std::int64_t writtenRate = 0;
    /// The sound may hold a second band that nobody speaks of: it then plays at twice the rate.
    bool mayHaveSecondBand = false;
};

/// The first entry of a "stsd"; all zeros without one.
Mp4Entry readMp4Entry(TagLib::File& file, const Mp4Atom& descriptions);
} // namespace audiocore
