#pragma once

#include "collection/librarytracks.h"

#include <QString>

#include <functional>
#include <string>

/// What is wrong with a music library that can be read. Changes nothing. Any thread.
namespace LibraryProblems {
struct Problem
{
    const char* kind; ///< "missing", "no-file", "changed", "shared", "identifier" or "journal"
    SongFile song;    ///< the track that has it; without title and path where it is the library's own
    QString more;     ///< in words
};
constexpr const char* kinds[] = {"missing", "no-file", "changed", "shared", "identifier", "journal"};

using Tell = std::function<void(const Problem& problem)>;
/// Told before each track how many are done; false ends it there.
using GoOn = std::function<bool(int done)>;

/// Tells of each problem, track by track. False where it was ended.
bool find(LibraryTracks& tracks, const Tell& tell, const GoOn& goOn);
} // namespace LibraryProblems
