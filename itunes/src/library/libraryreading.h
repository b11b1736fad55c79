#pragma once

#include "library/librarywalk.h"
#include "library/trackedit.h"
#include "library/trackstore.h"

#include <cstdio>
#include <memory>
#include <string>

namespace base {
class FileBytes;
}

namespace itunes {
struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a regular file of a bearable size for reading; null with the reason otherwise.
File openLibrary(const std::string& path, std::string& error);
/// Shows the library in the file to the visitor. False when it is broken, with what and where, or cannot be
/// read to its end.
bool walkFile(const base::FileBytes& file, LibraryVisitor& visitor, std::string& error);
/// Why reading a file failed that is whole as far as anybody knows.
extern const char* const notReadToItsEnd;

/// The library in the file, with changes that the file does not hold yet; null with the reason when it cannot
/// be read whole.
std::unique_ptr<TrackStore> readLibrary(const std::string& path, const TrackChanges& changes,
                                        std::string& error);
/// The same of bytes wherever they lie.
std::unique_ptr<TrackStore> readLibrary(const base::FileBytes& file, const TrackChanges& changes,
                                        std::string& error);
} // namespace itunes
