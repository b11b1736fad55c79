#pragma once

#include <string>
#include <vector>

namespace itunes {
/// Where the library file is looked for, as the option and the environment say when this is made. Paths are
/// UTF-8.
class LibraryPlaces
{
public:
    explicit LibraryPlaces(const std::string& option);

    /// The library file to use: the option when it is not empty, else the variable MELODRIFT_ITUNES_LIBRARY,
    /// else the first file that is there among the usual ones. Empty when there is none. A file that the user
    /// names is used whether it is there or not: never another one in its stead.
    std::string file() const;
    /// The folders where the music programs keep their library, in the order of looking; none where a file is
    /// named.
    std::vector<std::string> folders() const;

private:
    std::string m_named;
    std::string m_home;
    std::string m_configuration; ///< its folder
};
} // namespace itunes
