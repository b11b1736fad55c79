#pragma once

namespace TagLib::ASF {
class File;
}

namespace audiocore {
class CheckedStream;
struct TagEdits;

/// Has the tag library write the edits into the file that lies in the stream. False when it refuses.
bool writeAsf(TagLib::ASF::File& file, CheckedStream& stream, const TagEdits& edits);
} // namespace audiocore
