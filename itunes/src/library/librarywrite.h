#pragma once

#include "library/librarycontents.h"
#include "library/trackedit.h"

#include <string>

namespace base {
struct Failure;
} // namespace base

namespace itunes {
/// What came of a writing.
struct Written
{
    LibraryContents contents;          ///< of the new file; without tracks when the old one was left alone
    std::size_t editsWithoutTrack = 0; ///< those that could not be made
};

/// Writes the changes into the library file: a complete new file takes the old one's place at one stroke.
/// Everything that the changes do not touch stays byte for byte as it is in the file now, whoever wrote it. A
/// file that says already what it should is left alone. False with the reason: the file is as it was.
bool writeChanges(const std::string& path, const TrackChanges& changes, Written& written,
                  base::Failure& failure);
} // namespace itunes
