#pragma once

#include "media/mpegframes.h"

namespace TagLib {
class File;
}

namespace audiocore {
class Mp4Atoms;

/// What the first track of sound in the file that has a rate says of itself, whatever it is coded in. All
/// zeros without one.
MpegStream measureMp4(TagLib::File& file, const Mp4Atoms& atoms);
} // namespace audiocore
