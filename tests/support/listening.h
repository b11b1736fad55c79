#pragma once

#include <cstddef>
#include <cstdint>

namespace Listening {
/// Gets what is heard, piece by piece.
using Take = void (*)(void* to, const std::uint8_t* bytes, std::size_t size);

/// What a file says of itself and of its first track of sound.
struct Figures
{
    double seconds;
    std::int64_t bitRate;
    int rate; ///< of the track, as all below
    double trackSeconds;
    std::int64_t trackBitRate;
};

/// Gets the tags, of the file or of the track.
using TakeTag = void (*)(void* to, bool ofFile, const char* name, const char* value);
} // namespace Listening

/// Decodes all of a file's sound: as it is, or, with a rate, the first track's as mono floats of that rate.
/// Says how many of its packets could not be decoded, or that it cannot be opened, which is less than
/// nothing.
extern "C" int listenToFile(const char* path, int rate, Listening::Take take, void* to);

/// Zeros of a file that cannot be opened, or has no sound.
extern "C" Listening::Figures askFile(const char* path, Listening::TakeTag take, void* to);

/// How many bytes the packets of that track have; zero of such files.
extern "C" std::int64_t weighFile(const char* path);
