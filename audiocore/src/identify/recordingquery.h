#pragma once

#include "identify/songhints.h"

#include <cstdint>
#include <string>

namespace audiocore {
/// Eleven days: whatever is longer is no song's length.
constexpr std::int64_t longestMilliseconds = 1000000000;

/// How far the length of a recording may lie from a file's.
constexpr std::int64_t mostMillisecondsApart = 7000;

/// What to search for, in the syntax of the search: title and artist must be met, in some of their words or
/// in words like them; album and length are wished for. Without an artist the album must be met. Empty where
/// there is too little to search for.
std::string recordingQuery(const SongHints& hints);
} // namespace audiocore
