#pragma once

#include <string>

namespace audiocore {
/// What names a song. Texts are UTF-8, empty where nothing is known.
struct SongNames
{
    std::string title;
    std::string artist;
    std::string album;
};

/// What the path of a file says about the song in it, by the first pattern that fits its name:
///
///   "NN - Artist - Title", "Artist - Title", "Artist - NN - Title", "NN - Artist - Album - Title",
///   "Artist - Album - Title", "Artist - Album - NN - Title", "Artist - Album - NN Title",
///   "NN Title", "NN. Title", "NN - Title", "D-NN Title" in "Artist/Album/" or "Artist - Album/",
///   "Title": then the folders say nothing.
///
/// NN is the track's number, one to three digits; where only a blank follows it, two, of which the first is
/// 0, or up to 3 where no " - " follows; where a dash without a blank does, the first is 0. Underscores stand
/// for blanks, and between such a name's words every dash parts. Any dash between blanks does. A year at
/// either end of an album's folder is left out, and a folder "CD 1" is passed over. Whose folder is named as
/// the artist in the name has the album's name, too.
SongNames namesInPath(const std::string& path);
} // namespace audiocore
