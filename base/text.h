#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// UTF-8 is taken apart, put together and judged here and nowhere else. What is in the header is there for
/// the reading of whole libraries.
namespace base {
/// What stands for a character that is none.
constexpr char32_t replacementCharacter = 0xFFFD;

/// Whatever the locale: a small letter for one of the 26 capitals, all else as it is.
constexpr char smallAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}

/// Whether the number stands for a character: within Unicode, and no surrogate half.
constexpr bool isCharacter(char32_t c)
{
    return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
}

/// Whether the byte is a further one of a character.
constexpr bool continuesUtf8(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// A number as UTF-8 has it, which may be a surrogate half, and so many bytes: none where the bytes are no
/// UTF-8.
struct Utf8Number
{
    char32_t number = 0;
    std::size_t size = 0;

    bool isCharacter() const { return size > 0 && base::isCharacter(number); }
};

/// What the bytes at `at`, inside the text, begin with.
inline Utf8Number utf8At(std::string_view text, std::size_t at)
{
    const auto byte = [text](std::size_t i) { return char32_t(static_cast<unsigned char>(text[i])); };
    const auto follows = [text](std::size_t i) { return i < text.size() && continuesUtf8(text[i]); };
    const auto bits = [byte](std::size_t i) { return byte(i) & 0x3F; };
    const char32_t first = byte(at);
    if (first < 0x80)
        return {first, 1};
    if (first < 0xC2 || first > 0xF4 || !follows(at + 1))
        return {};
    if (first < 0xE0)
        return {(first & 0x1F) << 6 | bits(at + 1), 2};
    if (!follows(at + 2))
        return {};
    if (first < 0xF0) {
        const char32_t number = (first & 0x0F) << 12 | bits(at + 1) << 6 | bits(at + 2);
        return number < 0x800 ? Utf8Number() : Utf8Number{number, 3};
    }
    if (!follows(at + 3))
        return {};
    const char32_t number = (first & 0x07) << 18 | bits(at + 1) << 12 | bits(at + 2) << 6 | bits(at + 3);
    return number < 0x10000 || number > 0x10FFFF ? Utf8Number() : Utf8Number{number, 4};
}

constexpr std::size_t longestUtf8 = 4;
/// Writes a number up to U+10FFFF as UTF-8, a surrogate half as well; so many bytes.
std::size_t putUtf8(char* out, char32_t c);
/// Appends a character as UTF-8.
void appendUtf8(std::string& out, char32_t c);
/// Whether the text is UTF-8 of characters from the first byte to the last.
bool isUtf8(std::string_view text);
/// UTF-32 to UTF-8; nothing when the text holds a surrogate half or a number that is no character.
std::optional<std::string> toUtf8(const std::u32string& text);
/// UTF-8 to UTF-32; what is no UTF-8 becomes U+FFFD.
std::u32string toUtf32(const std::string& text);

/// The year of whatever date the text holds: its four digits, or up to three that are all of the text.
/// Without leading zeros; empty when there is none and for 0.
std::string yearOf(const std::string& date);
/// The number before a "/", without blanks and leading zeros; empty for none and for 0.
std::string trackOf(const std::string& track);
} // namespace base
