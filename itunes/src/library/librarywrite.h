#pragma once

#include "base/failure.h"
#include "base/platform.h"
#include "library/librarycontents.h"
#include "library/librarysplices.h"
#include "library/trackedit.h"

#include <cstddef>
#include <string>
#include <vector>

namespace itunes {
class TakenPieces;
class TakenTracks;

/// What came of a writing.
struct Written
{
    bool replaced = false;             ///< the old file was left alone otherwise; then only the edits count
    base::FileState before;            ///< of the old file
    LibraryContents contents;          ///< of the new file
    std::vector<Splice> splices;       ///< with what was taken out of the old one
    std::size_t editsWithoutTrack = 0; ///< those that could not be made
};

/// Writes the changes into the library file: a complete new file takes the old one's place at one stroke.
/// Everything that the changes do not touch stays byte for byte as it is in the file now, whoever wrote it. A
/// file that says already what it should is left alone. False with the reason: the file is as it was.
bool writeChanges(const std::string& path, const TrackChanges& changes, Written& written,
                  base::Failure& failure);
/// Puts back into the library file what was taken out of it for some tracks, in the same way. The file has to
/// be in the state that the pieces are of.
bool writeBack(const std::string& path, const TakenPieces& taken, const std::vector<Splice>& pieces,
               Written& written, base::Failure& failure);
/// The same with what an earlier run took out: all tracks of that which the file does not hold. It then has
/// the bytes that it had before; else another program changed it since, and it stays.
bool writeBack(const std::string& path, const TakenTracks& taken, Written& written, base::Failure& failure);
/// Why a change of the file as we left it cannot be taken back.
base::Failure changedByOthers();
} // namespace itunes
