#pragma once

#include "media/mpegframes.h"

namespace audiocore {
class CheckedStream;
class WavChunks;

/// What a WAV file says of its sound, by the bytes of it that are there. All zeros without sound or without
/// the chunk that tells of its kind; where there is no sound yet, without a length.
MpegStream measureWav(CheckedStream& stream, const WavChunks& chunks);
} // namespace audiocore
