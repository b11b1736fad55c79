#include "library/location.h"

#include "base/text.h"

#include <algorithm>

namespace {
constexpr std::string_view prefix = "file://localhost";

/// Whether the text begins with the lower-case ASCII word, in any case.
bool begins(std::string_view text, std::string_view word)
{
    return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(),
                                                    [](char a, char b) { return a == base::smallAscii(b); });
}

int hexadecimal(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char small = base::smallAscii(c);
    return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

/// The byte that an escape at `at` stands for; -1 for no escape.
int escapeAt(std::string_view text, std::size_t at)
{
    if (at + 2 >= text.size() || text[at] != '%')
        return -1;
    const int high = hexadecimal(text[at + 1]);
    const int low = hexadecimal(text[at + 2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

std::string escapedPath(std::string_view path)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > ' ' && byte < 0x7F && std::string_view("%#?\"<>").find(c) == std::string_view::npos)
            out += c;
        else
            out.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    return out;
}
} // namespace

std::string itunes::normalisedLocation(std::string_view url)
{
    if (url.substr(0, 1) == "/")
        return std::string(prefix) + escapedPath(url);
    if (!begins(url, "file:"))
        return std::string();
    std::string_view rest = url.substr(5);
    if (rest.substr(0, 2) != "//")
        return rest.substr(0, 1) == "/" ? std::string(prefix).append(rest) : std::string();
    rest.remove_prefix(2);
    if (begins(rest, "localhost/") || rest.substr(0, 1) == "/")
        return std::string(prefix).append(rest.substr(rest.find('/')));
    // The share of another machine: its name becomes the path's beginning, as in "//server/share".
    return rest.find('/') == std::string_view::npos ? std::string()
                                                    : std::string(prefix) + "//" + std::string(rest);
}

std::string itunes::pathOf(std::string_view location)
{
    if (location.substr(0, prefix.size()) != prefix)
        return std::string();
    const std::string_view escaped = location.substr(prefix.size());
    std::string path;
    for (std::size_t at = 0; at < escaped.size(); ++at) {
        const int byte = escapeAt(escaped, at);
        path += byte < 0 ? escaped[at] : char(byte);
        at += byte < 0 ? 0 : 2;
    }
    if (path.find('\0') != std::string::npos)
        return std::string();
#ifdef _WIN32
    if (path.size() > 2 && path[0] == '/' && path[2] == ':')
        path.erase(0, 1);
#endif
    return path;
}

std::string_view itunes::cutLocation(std::string_view location, std::size_t bytes)
{
    if (location.size() <= bytes)
        return location;
    // The last place within the room where a character begins.
    std::size_t cut = 0;
    for (std::size_t at = 0; at <= bytes;) {
        const int escape = escapeAt(location, at);
        if (!base::continuesUtf8(escape < 0 ? location[at] : char(escape)))
            cut = at;
        at += escape < 0 ? 1 : 3;
    }
    return location.substr(0, cut);
}
