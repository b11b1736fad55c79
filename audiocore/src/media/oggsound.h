#pragma once

#include "media/mpegframes.h"
#include "media/oggstream.h"

#include <vector>

namespace audiocore {
/// Length, rates and all of the music of an Ogg file, that which others put behind it among it. The positions
/// of its first page say where it begins, which need not be at 0: TagLib was tried, and tells such music
/// longer than it is.
MpegStream measureOgg(CheckedStream& stream, const std::vector<OggStream>& streams, const OggStream& music);
} // namespace audiocore
