#pragma once

#include <cstdint>

namespace TagLib {
class IOStream;
}

/// A walk of our own over the frames. TagLib was tried: it tells nothing of raw AAC, where looking for it
/// takes 4 ms a file, and takes any bytes for MPEG audio. FFmpeg was tried: of raw AAC it guesses the length,
/// which this walk tells exactly in less than 1 ms for 5 MB.
namespace audiocore {
/// What the frames of a raw MPEG audio stream tell.
struct MpegStream
{
    std::int64_t milliseconds = 0;
    std::int32_t sampleRate = 0;
    std::int64_t bitsPerSecond = 0;
};

/// MP3 from `begin` on: by the Xing, Info or VBRI header where there is one, else by walking all frame
/// headers. All zeros when there is no stream.
MpegStream measureMp3(TagLib::IOStream& stream, long begin);
/// Raw ADTS AAC from `begin` on, by walking all frame headers. All zeros when there is no stream.
MpegStream measureAdts(TagLib::IOStream& stream, long begin);

/// Whether frames of the kind follow one another within `searchLength` bytes from `begin` on: two, or four
/// where they begin more than 64 kB behind.
bool findsMp3(TagLib::IOStream& stream, long begin, long searchLength);
bool findsAdts(TagLib::IOStream& stream, long begin, long searchLength);
} // namespace audiocore
