#pragma once

#include "identify/nameguess.h"

#include <cstdint>

namespace audiocore {
/// What a file says about the song in it.
struct SongHints
{
    SongNames names;
    std::int64_t milliseconds = 0; ///< its length, 0 when unknown
};

/// The names without those that say nothing ("Track 3", "Unknown Artist", "Various Artists"); where title or
/// artist is missing then, what is missing is taken from the path.
SongNames completed(const SongNames& tagged, const std::string& path);
/// By tags, name and folders of a file; nothing for one that cannot be read.
SongHints hintsOf(const std::string& path);
} // namespace audiocore
