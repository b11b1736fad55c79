#pragma once

#include <functional>
#include <string>
#include <vector>

/// What a search for the library file comes to. Paths are UTF-8.
struct iTunesLibraryFound
{
    std::string file;                 ///< empty when there is none; one that the user named may not be there
    std::vector<std::string> folders; ///< that were looked at; none where a file is named
};

/// The search that GetMusicInfo would begin with, by the option and the environment as they are now. This
/// asks no disk and returns at once; what it returns does, on any thread, and takes as long as a disk or a
/// network share needs to answer.
std::function<iTunesLibraryFound()> iTunesLibrarySearch();
