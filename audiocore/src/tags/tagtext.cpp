#include "tags/tagtext.h"

#include "base/text.h"

#include <algorithm>

namespace {
/// What the bytes from 0x80 to 0x9F stand for; the others stand for themselves.
constexpr char32_t windowsCharacters[] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                          0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                          0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                          0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

char upper(char c)
{
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}
} // namespace

std::string audiocore::readableText(const TagLib::ByteVector& bytes)
{
    std::string text(bytes.data(), bytes.size());
    if (base::isUtf8(text))
        return text;
    std::string readable;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        base::appendUtf8(readable, byte >= 0x80 && byte < 0xA0 ? windowsCharacters[byte - 0x80] : byte);
    }
    return readable;
}

std::string audiocore::totalOf(const std::string& track)
{
    const size_t slash = track.find('/');
    return slash == std::string::npos ? std::string() : track.substr(slash);
}

bool audiocore::sameName(const std::string& one, const std::string& other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, char b) { return upper(a) == upper(b); });
}
