#pragma once

namespace audiocore {
class Mp4File;
struct TagEdits;

/// Applies the edits to the file's list of items; items that are not edited keep their bytes, and the tables
/// that say where the music is follow it where it moves. False when that cannot be done; the file is damaged
/// then. TagLib's writer would not keep the items' bytes: see tagwriting.h.
bool writeMp4(Mp4File& file, const TagEdits& edits);
} // namespace audiocore
