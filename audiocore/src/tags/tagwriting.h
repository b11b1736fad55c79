#pragma once

#include "tags/tagfields.h"

/// Tags are written by bytes of our own: id3v2bytes, apebytes, commentbytes, infobytes, mp4writing and
/// asfbytes. TagLib's writers were tried for it: they drop frames, atoms and encodings that no edit touched,
/// and put fields into another order.
namespace audiocore {
/// Applies the edits to the file's tags and saves them. The file's tag objects are of no use afterwards. Why
/// it did not work, empty on success; the file may be half written then.
std::string writeTags(const MediaFile& media, const TagEdits& edits);
} // namespace audiocore
