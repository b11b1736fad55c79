#pragma once

#include "base/failure.h"
#include "library/trackedit.h"
#include "library/trackstore.h"
#include "xml/xmlscanner.h"

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
/// What the scanner found broken, with the line and the column of the file.
std::string describeError(const base::FileBytes& file, const XmlScanner& scanner);

/// Why a library was not read.
struct ReadingFailure
{
    base::Failure failure;
    std::uint64_t line = 0; ///< where the file is broken; 0 when it could not be opened
};

/// The library in the file, with changes that the file does not hold yet; null with the reason when it cannot
/// be read whole.
std::unique_ptr<TrackStore> readLibrary(const std::string& path, const TrackChanges& changes,
                                        ReadingFailure& failure);
/// The same of bytes wherever they lie.
std::unique_ptr<TrackStore> readLibrary(const base::FileBytes& file, const TrackChanges& changes,
                                        std::string& error);
} // namespace itunes
