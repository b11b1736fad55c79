#pragma once

#include "base/platform.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace base {
struct Failure;
class FileBytes;
} // namespace base

namespace itunes {
/// Which tracks the library file holds in one of its states.
struct LibraryContents
{
    base::FileState state;
    std::vector<std::uint64_t>
        ids;                  ///< persistent identifiers in ascending order, each as often as it is there
    std::uint64_t tracks = 0; ///< those without an identifier included

    std::size_t count(std::uint64_t id) const;
};

/// False when the library is broken, with what and where, or cannot be read to its end. The state stays the
/// caller's to fill in.
bool readContents(const base::FileBytes& library, LibraryContents& contents, base::Failure& failure);
/// The same, and the state.
bool readContents(std::FILE* library, LibraryContents& contents, base::Failure& failure);

/// Where the library says that a track's file is, as it stands there; empty when there is no such track or
/// several. False when the library cannot be read.
bool readLocation(const std::string& path, std::uint64_t id, std::string& location, std::string& error);
} // namespace itunes
