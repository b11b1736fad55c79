#include "library/libraryplace.h"

#include "base/platform.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#ifdef _WIN32
#include <shlobj.h>
#include <windows.h>
#endif

namespace fs = std::filesystem;

namespace {
std::string fromNative(const fs::path& path)
{
    return path.u8string();
}

#ifndef _WIN32
std::string variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

/// Empty when there is none.
fs::path homeFolder()
{
    const fs::path home = variable("HOME");
    return home.is_absolute() ? home : fs::path();
}
#endif

#if defined(_WIN32)
fs::path musicFolder()
{
    PWSTR known = nullptr;
    fs::path folder;
    if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_Music, 0, nullptr, &known)))
        folder = known;
    CoTaskMemFree(known);
    return folder;
}
#elif defined(__APPLE__)
fs::path musicFolder()
{
    return homeFolder() / "Music";
}
#else
/// What a line such as XDG_MUSIC_DIR="$HOME/Musik" names; empty for another line.
std::string userFolder(const std::string& line, const std::string& home)
{
    static const std::string key = "XDG_MUSIC_DIR=\"";
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == std::string::npos || line.compare(begin, key.size(), key) != 0)
        return std::string();
    const std::size_t value = begin + key.size();
    const std::size_t end = line.find('"', value);
    if (end == std::string::npos)
        return std::string();
    const std::string folder = line.substr(value, end - value);
    return folder.compare(0, 6, "$HOME/") == 0 ? home + folder.substr(5) : folder;
}

fs::path musicFolder()
{
    const std::string home = homeFolder().u8string();
    if (home.empty())
        return fs::path();
    std::string configuration = variable("XDG_CONFIG_HOME");
    if (configuration.empty())
        configuration = home + "/.config";
    std::ifstream settings(configuration + "/user-dirs.dirs");
    for (std::string line; std::getline(settings, line);) {
        const std::string folder = userFolder(line, home);
        if (folder.compare(0, 1, "/") == 0)
            return folder;
    }
    return fs::path(home) / "Music";
}
#endif

std::string namedByVariable()
{
#ifdef _WIN32
    const wchar_t* const value = _wgetenv(L"MELODRIFT_ITUNES_LIBRARY");
    return value ? fromNative(value) : std::string();
#else
    return variable("MELODRIFT_ITUNES_LIBRARY");
#endif
}
} // namespace

std::vector<std::string> itunes::usualFolders()
{
    const fs::path music = musicFolder();
    // Without a home there are none: never what happens to lie where the program was started.
    if (!music.is_absolute())
        return {};
    return {fromNative(music / "iTunes"), fromNative(music / "Music"), fromNative(music)};
}

std::string itunes::libraryPlace(const std::string& option)
{
    if (!option.empty())
        return option;
    std::string named = namedByVariable();
    if (!named.empty())
        return named;
    for (const std::string& folder : usualFolders()) {
        for (const char* name : {"/iTunes Music Library.xml", "/iTunes Library.xml", "/Library.xml"}) {
            base::FileState state;
            if (base::stateOf(folder + name, state) && state.regular)
                return folder + name;
        }
    }
    return std::string();
}
