#pragma once

#include "audiocore/saveproblem.h"
#include "library/trackedit.h"

#include <optional>
#include <string>
#include <vector>

namespace itunes {
/// The picture in a media file; empty when there is none. Paths are UTF-8.
std::vector<char> readPicture(const std::string& mediaPath);

/// What goes into the tags of a media file. Fields without a value stay as they are, empty ones are taken
/// out.
struct MediaTags
{
    std::optional<std::string> name;
    std::optional<std::string> artist;
    std::optional<std::string> album;
    std::optional<std::string> genre;
    std::optional<std::string> year;
    std::optional<std::vector<char>> picture;
};

/// What an edit of a track puts there; an empty picture is none.
MediaTags tagsOf(const TrackEdit& edit, std::vector<char> picture);

/// Puts them into a media file: all of them, or none. What is left as it was has a problem, which the log
/// tells. `former` gets what the file said in the same fields; a picture that it has already is none of them.
SaveProblem writeTags(const std::string& mediaPath, const MediaTags& tags, MediaTags* former = nullptr);
} // namespace itunes
