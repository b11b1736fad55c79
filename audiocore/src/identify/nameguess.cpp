#include "identify/nameguess.h"

#include "identify/foldedtext.h"

#include <algorithm>
#include <optional>
#include <vector>

using audiocore::SongNames;

namespace {
bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::size_t digitsAt(const std::string& text, std::size_t at)
{
    std::size_t end = at;
    while (end < text.size() && isDigit(text[end]))
        ++end;
    return end - at;
}

std::string trimmed(const std::string& text)
{
    const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

void replaceAll(std::string& text, const std::string& what, const std::string& with)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

/// With blanks for underscores, and " - " for whatever dash parts.
std::string plain(std::string name)
{
    const bool underscored = name.find('_') != std::string::npos && name.find(' ') == std::string::npos;
    std::replace(name.begin(), name.end(), '_', ' ');
    for (const char* dash : {"\u2013", "\u2014"})
        replaceAll(name, dash, "-");
    if (underscored)
        replaceAll(name, "-", " - ");
    while (name.find("  ") != std::string::npos)
        replaceAll(name, "  ", " ");
    return trimmed(name);
}

std::vector<std::string> parts(const std::string& name)
{
    static const std::string dash = " - ";
    std::vector<std::string> result;
    for (std::size_t begin = 0; begin <= name.size();) {
        const std::size_t end = std::min(name.find(dash, begin), name.size());
        const std::string part = trimmed(name.substr(begin, end - begin));
        if (!part.empty() && part != "-")
            result.push_back(part);
        begin = end + dash.size();
    }
    return result;
}

bool isNumber(const std::string& text)
{
    return !text.empty() && text.size() <= 3 && digitsAt(text, 0) == text.size();
}

/// Whether what stands between a number of so many digits, 0 for one with its disc's, and the rest makes it a
/// track's. "8-bit" and "7 years" are words.
bool partsNumber(const std::string& name, std::size_t digits, const std::string& signs,
                 const std::string& rest)
{
    const bool ofDisc = digits == 0;
    if (signs == " ") {
        const bool dashed = rest.find(" - ") != std::string::npos;
        return ofDisc || (digits == 2 && (name[0] == '0' || (name[0] <= '3' && !dashed)));
    }
    return ofDisc || signs[0] != '-' || name[0] == '0';
}

/// What stands behind a track's number; nothing where there is none.
std::optional<std::string> behindNumber(const std::string& name)
{
    std::size_t digits = digitsAt(name, 0);
    std::size_t end = digits;
    if (digits == 0 || digits > 3)
        return std::nullopt;
    if (digits <= 2 && end < name.size() && name[end] == '-' && digitsAt(name, end + 1) == 2) {
        end += 3;
        digits = 0;
    }
    const std::size_t begin = name.find_first_not_of(" .)-", end);
    if (begin == std::string::npos || begin == end)
        return std::nullopt;
    std::string rest = name.substr(begin);
    if (!partsNumber(name, digits, name.substr(end, begin - end), rest))
        return std::nullopt;
    return rest;
}

std::string withoutYear(std::string album)
{
    const auto isYearAt = [&album](std::size_t at) {
        return digitsAt(album, at) == 4 && (album[at] == '1' || album[at] == '2');
    };
    const auto isBracketed = [&](std::size_t at) {
        return at + 6 <= album.size() && (album[at] == '(' || album[at] == '[') && isYearAt(at + 1) &&
               (album[at + 5] == ')' || album[at + 5] == ']');
    };
    if (album.size() > 6 && isBracketed(0))
        return trimmed(album.substr(6));
    if (album.size() > 6 && isBracketed(album.size() - 6))
        return trimmed(album.substr(0, album.size() - 6));
    return album;
}

bool isDisc(const std::string& folder)
{
    const std::vector<std::u32string> words = audiocore::wordsOf(audiocore::folded(folder));
    const std::u32string word = words.empty() ? U"" : words.front();
    const std::u32string name = word.substr(0, std::min(word.find_first_of(U"0123456789"), word.size()));
    const bool numbered = name.size() < word.size() || words.size() == 2;
    return numbered && (name == U"cd" || name == U"disc" || name == U"disk");
}

/// The artist and the album that the folders name.
SongNames namesInFolders(std::vector<std::string> folders)
{
    SongNames names;
    if (!folders.empty() && isDisc(folders.back()))
        folders.pop_back();
    if (folders.empty())
        return names;
    std::vector<std::string> own = parts(plain(folders.back()));
    const auto isYear = [](const std::string& part) { return part.size() == 4 && digitsAt(part, 0) == 4; };
    if (own.size() > 1)
        own.erase(std::remove_if(own.begin(), own.end(), isYear), own.end());
    if (!own.empty())
        names.album = withoutYear(own.back());
    if (own.size() > 1)
        names.artist = own.front();
    else if (folders.size() > 1)
        names.artist = plain(folders[folders.size() - 2]);
    return names;
}

/// The file's name without its ending, and the folders above it.
std::vector<std::string> takenApart(const std::string& path)
{
    std::vector<std::string> result;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find_first_of("/\\", begin), path.size());
        if (end > begin)
            result.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    if (result.empty())
        return result;
    std::string& name = result.back();
    const std::size_t point = name.rfind('.');
    if (point != std::string::npos && point > 0 && name.size() - point <= 5 &&
        name.find(' ', point) == std::string::npos)
        name.resize(point);
    return result;
}

/// The parts of a name between dashes, without the track's number.
std::vector<std::string> partsWithoutNumber(const std::string& name, bool& numbered)
{
    const std::optional<std::string> rest = behindNumber(name);
    numbered = rest.has_value();
    std::vector<std::string> result = parts(rest ? *rest : name);
    for (std::size_t i = 1; !numbered && i + 1 < result.size(); ++i)
        if (isNumber(result[i])) {
            result.erase(result.begin() + std::ptrdiff_t(i));
            numbered = true;
        }
    if (!numbered && result.size() > 2)
        result.back() = behindNumber(result.back()).value_or(result.back());
    return result;
}
} // namespace

SongNames audiocore::namesInPath(const std::string& path)
{
    SongNames names;
    std::vector<std::string> folders = takenApart(path);
    if (folders.empty())
        return names;
    const std::string name = plain(folders.back());
    folders.pop_back();
    bool numbered = false;
    const std::vector<std::string> own = partsWithoutNumber(name, numbered);
    if (own.empty())
        return names;
    const SongNames above = namesInFolders(std::move(folders));
    names.title = own.back();
    if (own.size() == 1 && numbered) {
        names.artist = above.artist;
        names.album = above.album;
    }
    if (own.size() > 1)
        names.artist = own.front();
    if (own.size() > 2)
        names.album = own[1];
    else if (own.size() == 2 && folded(names.artist) == folded(above.artist))
        names.album = above.album;
    return names;
}
