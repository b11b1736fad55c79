#pragma once

#include <string>

namespace audiocore {
class Mp4File;
struct FileEdits;

/// Applies the edits to the file's own list of items, which is made where there is none, and to whatever else
/// holds the same fields; what is not edited keeps its bytes, and the tables that say where the music is
/// follow it where it moves. Why that cannot be done, empty on success; the file is damaged then. TagLib's
/// writer would not keep the items' bytes: see tagwriting.h.
std::string writeMp4(Mp4File& file, const FileEdits& edits);
} // namespace audiocore
