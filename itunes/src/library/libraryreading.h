#pragma once

#include "base/failure.h"
#include "library/librarywalk.h"
#include "library/trackedit.h"
#include "library/trackstore.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace base {
class FileBytes;
} // namespace base

namespace itunes {
struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a regular file of a bearable size for reading; null with the reason otherwise.
File openLibrary(const std::string& path, base::Failure& failure);

/// Why a library was not read.
struct ReadingFailure
{
    base::Failure failure;
    std::uint64_t line = 0; ///< where the file is broken; 0 when it could not be opened or read to its end
};

/// Why reading a file failed that is whole as far as anybody knows.
extern const char* const notReadToItsEnd;
/// Shows the library in the file to the visitor. False when it is broken, with what and where, or cannot be
/// read to its end.
bool walkFile(const base::FileBytes& file, LibraryVisitor& visitor, ReadingFailure& failure);
/// The same for who does not ask for the line.
bool walkFile(const base::FileBytes& file, LibraryVisitor& visitor, base::Failure& failure);

/// The library in the file, with changes that the file does not hold yet; null with the reason when it cannot
/// be read whole.
std::unique_ptr<TrackStore> readLibrary(const std::string& path, const TrackChanges& changes,
                                        ReadingFailure& failure);
/// The same of bytes wherever they lie.
std::unique_ptr<TrackStore> readLibrary(const base::FileBytes& file, const TrackChanges& changes,
                                        ReadingFailure& failure);
} // namespace itunes
