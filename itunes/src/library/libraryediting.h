#pragma once

#include "library/librarycontents.h"
#include "library/librarysplices.h"
#include "library/trackedit.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace base {
struct Failure;
class FileBytes;
} // namespace base

/// Changing a library, wherever its bytes lie. Which file is changed and whose place the new one takes is the
/// matter of `writeChanges` alone.
namespace itunes {
/// What tells the bytes of one library from those of another.
struct ContentMark
{
    std::int64_t size = 0;
    std::uint64_t hash = 0;

    bool operator==(const ContentMark& other) const { return size == other.size && hash == other.hash; }
    /// Nothing where it cannot be read to its end.
    static std::optional<ContentMark> of(const base::FileBytes& library);
};

/// What has to change in a library, in its order.
struct LibrarySplices
{
    std::vector<Splice> all; ///< their texts are such as the library's encoding takes
    std::uint64_t tracksLeft = 0;
    std::size_t editsWithoutTrack = 0; ///< those that cannot be made
    std::optional<ContentMark> wanted; ///< of the new file; nothing where only its tracks are known
};

/// False when the library is broken, with what and where, or cannot be read to its end.
bool findSplices(const base::FileBytes& library, const TrackChanges& changes, LibrarySplices& found,
                 base::Failure& failure);
/// Writes the library with what has to change into the empty copy and hands that to its device; false with
/// the reason. The splices then have what was taken out of tracks, unless that is more than anybody keeps.
bool writeSpliced(const base::FileBytes& library, base::FileBytes& copy, LibrarySplices& splices,
                  std::string& error);
/// Whether the copy, by what was read of it, holds the tracks that are left: the library is not given up for
/// less. False with the reason.
bool isComplete(const LibraryContents& copy, const LibrarySplices& splices, std::string& error);
} // namespace itunes
