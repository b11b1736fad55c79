#include "base/text.h"

#include <algorithm>

namespace {
constexpr char32_t replacement = 0xFFFD;

/// The number of bytes that a character starting with this byte takes; 0 when none starts so.
int sequenceLength(unsigned char first)
{
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first < 0xE0)
        return 2;
    if (first >= 0xE0 && first < 0xF0)
        return 3;
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

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

void base::appendUtf8(std::string& out, char32_t c)
{
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

bool base::isCharacter(char32_t c)
{
    return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
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
    static const char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    static const unsigned char leadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    std::u32string out;
    out.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        const auto first = static_cast<unsigned char>(text[at]);
        const int length = sequenceLength(first);
        char32_t c = first & leadBits[length];
        bool whole = length > 0 && at + size_t(length) <= text.size();
        for (int i = 1; whole && i < length; ++i) {
            const auto next = static_cast<unsigned char>(text[at + size_t(i)]);
            whole = (next & 0xC0) == 0x80;
            c = (c << 6) | (next & 0x3F);
        }
        const bool valid = whole && c >= smallest[length] && isCharacter(c);
        out += valid ? c : replacement;
        at += valid ? size_t(length) : 1;
    }
    return out;
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
