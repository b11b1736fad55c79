#pragma once

#include "tagfields.h"

namespace TagLib::MP4 {
class Tag;
}

namespace audiocore {
/// Applies the edits to the MP4 file's tag and saves it; atoms that are not edited keep their bytes. False
/// when the tag library refuses.
bool writeMp4(TagLib::File& file, TagLib::MP4::Tag& tag, const TagEdits& edits);
/// The item's atom as text, whatever it is encoded in.
std::string mp4Text(TagLib::File& file, int type);
} // namespace audiocore
