#pragma once

#include "audiocore/saveproblem.h"
#include "library/trackedit.h"

#include <string>
#include <vector>

namespace itunes {
/// The picture in a media file; empty when there is none. Paths are UTF-8.
std::vector<char> readPicture(const std::string& mediaPath);

/// Puts what an edit changes into the tags of a media file, and the picture, unless it is empty or is in
/// there already. What is left as it was has a problem, which the log tells.
SaveProblem writeTags(const std::string& mediaPath, const TrackEdit& edit, const std::vector<char>& picture);
} // namespace itunes
