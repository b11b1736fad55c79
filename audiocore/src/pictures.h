#pragma once

#include "mediafile.h"

#include <taglib/tbytevector.h>

namespace audiocore {
/// The bytes of the front cover, else of the first picture; empty without one.
TagLib::ByteVector readPicture(const MediaFile& media);
/// Takes all pictures out of the file and these tags of it in memory, and puts the bytes in as the front
/// cover, unless they are empty.
void writePicture(const MediaFile& media, const std::vector<TagLib::Tag*>& tags,
                  const TagLib::ByteVector& bytes);
} // namespace audiocore
