#pragma once

#include <string>
#include <vector>

namespace itunes {
/// The library file to use, UTF-8: the option when it is not empty, else the variable
/// MELODRIFT_ITUNES_LIBRARY, else the first file that is there among the usual ones. Empty when there is
/// none. A file that the user names is used whether it is there or not: never another one in its stead.
std::string libraryPlace(const std::string& option);

/// The folders where the music programs keep their library, in the order of looking.
std::vector<std::string> usualFolders();
} // namespace itunes
