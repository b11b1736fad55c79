#pragma once

#include "tags/tagfields.h"

namespace audiocore {
/// Applies the edits to the file's tags and saves them. The file's tag objects are of no use afterwards. Why
/// it did not work, empty on success; the file may be half written then.
std::string writeTags(const MediaFile& media, const TagEdits& edits);
} // namespace audiocore
