#pragma once

#include "library/trackedit.h"
#include "library/trackstore.h"
#include "xml/xmlscanner.h"

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
/// What the scanner found broken, with the line and the column of the file.
std::string describeError(const base::FileBytes& file, const XmlScanner& scanner);

/// The library in the file, with changes that the file does not hold yet; null with the reason when it cannot
/// be read whole.
std::unique_ptr<TrackStore> readLibrary(const std::string& path, const TrackChanges& changes,
                                        std::string& error);
/// The same of bytes wherever they lie.
std::unique_ptr<TrackStore> readLibrary(const base::FileBytes& file, const TrackChanges& changes,
                                        std::string& error);
} // namespace itunes
