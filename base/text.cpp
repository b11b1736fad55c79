#include "base/text.h"

#include <algorithm>

namespace {
/// Behind this follow the numbers that stand for bytes of a name that is no text.
constexpr char32_t strayBytes = 0xDC00;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string withoutOuterBlanks(const std::string& text)
{
    const size_t begin = std::min(text.find_first_not_of(' '), text.size());
    return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

std::string withoutZeros(const std::string& digits)
{
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}
} // namespace

std::size_t base::putUtf8(char* out, char32_t c)
{
    if (c < 0x80) {
        out[0] = char(c);
        return 1;
    }
    if (c < 0x800) {
        out[0] = char(0xC0 | (c >> 6));
        out[1] = char(0x80 | (c & 0x3F));
        return 2;
    }
    if (c < 0x10000) {
        out[0] = char(0xE0 | (c >> 12));
        out[1] = char(0x80 | ((c >> 6) & 0x3F));
        out[2] = char(0x80 | (c & 0x3F));
        return 3;
    }
    out[0] = char(0xF0 | (c >> 18));
    out[1] = char(0x80 | ((c >> 12) & 0x3F));
    out[2] = char(0x80 | ((c >> 6) & 0x3F));
    out[3] = char(0x80 | (c & 0x3F));
    return 4;
}

void base::appendUtf8(std::string& out, char32_t c)
{
    char bytes[longestUtf8];
    out.append(bytes, putUtf8(bytes, c));
}

bool base::isUtf8(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Number read = utf8At(text, at);
        if (!read.isCharacter())
            return false;
        at += read.size;
    }
    return true;
}

std::optional<std::string> base::toUtf8(const std::u32string& text)
{
    std::string out;
    out.reserve(text.size());
    for (const char32_t c : text) {
        if (!isCharacter(c))
            return std::nullopt;
        appendUtf8(out, c);
    }
    return out;
}

std::u32string base::toUtf32(const std::string& text)
{
    std::u32string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const Utf8Number read = utf8At(text, at);
        out += read.isCharacter() ? read.number : replacementCharacter;
        at += read.isCharacter() ? read.size : 1;
    }
    return out;
}

std::u32string base::nameToUtf32(const std::string& name)
{
    std::u32string out;
    out.reserve(name.size());
    for (std::size_t at = 0; at < name.size();) {
        const Utf8Number read = utf8At(name, at);
        out += read.isCharacter() ? read.number : strayBytes + static_cast<unsigned char>(name[at]);
        at += read.isCharacter() ? read.size : 1;
    }
    return out;
}

std::optional<std::string> base::nameFromUtf32(const std::u32string& text)
{
    std::string out;
    out.reserve(text.size());
    for (const char32_t c : text) {
        if (c >= strayBytes + 0x80 && c <= strayBytes + 0xFF)
            out += char(c - strayBytes);
        else if (isCharacter(c))
            appendUtf8(out, c);
        else
            return std::nullopt;
    }
    return out;
}

std::string base::shownName(const std::string& name)
{
    return toUtf8(toUtf32(name)).value_or(std::string());
}

std::string base::yearOf(const std::string& date)
{
    // A number of fewer digits is a year only where it stands alone.
    const std::string text = withoutOuterBlanks(date);
    if (text.size() < 4 && std::all_of(text.begin(), text.end(), isDigit))
        return withoutZeros(text);
    for (size_t i = 0; i < date.size();) {
        size_t end = i;
        while (end < date.size() && isDigit(date[end]))
            ++end;
        // A longer run is a date without separators, such as 20120315.
        if (end - i >= 4)
            return withoutZeros(date.substr(i, 4));
        i = end + 1;
    }
    return std::string();
}

std::string base::trackOf(const std::string& track)
{
    size_t begin = 0;
    while (begin < track.size() && (track[begin] == ' ' || track[begin] == '0'))
        ++begin;
    size_t end = begin;
    while (end < track.size() && isDigit(track[end]))
        ++end;
    return track.substr(begin, end - begin);
}
