#pragma once

namespace TagLib::ASF {
class File;
}

namespace audiocore {
class CheckedStream;
struct TagEdits;

/// Applies the edits to the header of the file that lies in the stream. False, and nothing is written, where
/// its tags could not be kept.
bool writeAsf(TagLib::ASF::File& file, CheckedStream& stream, const TagEdits& edits);
} // namespace audiocore
