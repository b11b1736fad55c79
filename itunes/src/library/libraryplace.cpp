#include "library/libraryplace.h"

#include "base/platform.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

#ifdef _WIN32
#include <shlobj.h>
#include <windows.h>
#endif

namespace fs = std::filesystem;

using itunes::LibraryPlaces;

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

std::string homeFolder()
{
    const fs::path home = variable("HOME");
    return home.is_absolute() ? home.u8string() : std::string();
}

std::string configurationFolder(const std::string& home)
{
    const std::string named = variable("XDG_CONFIG_HOME");
    return named.empty() ? home + "/.config" : named;
}
#endif

#if defined(_WIN32)
fs::path musicFolder(const std::string&, const std::string&)
{
    PWSTR known = nullptr;
    fs::path folder;
    if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_Music, 0, nullptr, &known)))
        folder = known;
    CoTaskMemFree(known);
    return folder;
}
#elif defined(__APPLE__)
fs::path musicFolder(const std::string& home, const std::string&)
{
    return fs::path(home) / "Music";
}
#else
/// What a line such as XDG_MUSIC_DIR="$HOME/Musik" names; empty for another line.
std::string userFolder(const std::string& line, const std::string& home)
{
    constexpr std::string_view key = "XDG_MUSIC_DIR=\"";
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

fs::path musicFolder(const std::string& home, const std::string& configuration)
{
    if (home.empty())
        return fs::path();
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

LibraryPlaces::LibraryPlaces(const std::string& option) : m_named(option.empty() ? namedByVariable() : option)
{
#ifndef _WIN32
    m_home = homeFolder();
    m_configuration = configurationFolder(m_home);
#endif
}

std::vector<std::string> LibraryPlaces::folders() const
{
    if (!m_named.empty())
        return {};
    const fs::path music = musicFolder(m_home, m_configuration);
    // Without a home there are none: never what happens to lie where the program was started.
    if (!music.is_absolute())
        return {};
    return {fromNative(music / "iTunes"), fromNative(music / "Music"), fromNative(music)};
}

std::string LibraryPlaces::file() const
{
    if (!m_named.empty())
        return m_named;
    for (const std::string& folder : folders()) {
        for (const char* name : {"/iTunes Music Library.xml", "/iTunes Library.xml", "/Library.xml"}) {
            base::FileState state;
            if (base::stateOf(folder + name, state) && state.regular)
                return folder + name;
        }
    }
    return std::string();
}
