#pragma once

#include "cli/console.h"
#include "collection/songfile.h"
#include "collection/songlist.h"

#include <string>

/// Songs of a group as text.
namespace SongText {
/// What the songs of a group have in common, and how many they are.
std::string heading(const SongFile& first, SongList::By by, int songs, const Console& console);
/// "FLAC"; of a track in the library's words.
std::string format(const SongFile& song);
/// What copies are told apart by, the path last.
std::string row(const SongFile& song, const Console& console);
} // namespace SongText
