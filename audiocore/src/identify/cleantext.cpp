#include "identify/cleantext.h"

#include "base/text.h"

namespace {
constexpr std::size_t longestText = 1000; // characters

/// Line and paragraph separators, too.
bool isControl(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029;
}

/// What turns the direction of writing for all that follows, and what no text begins with but a file.
bool isUnseen(char32_t c)
{
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
}
} // namespace

std::string audiocore::cleanText(const std::string& text)
{
    std::string result;
    std::size_t taken = 0;
    for (std::size_t at = 0; at < text.size() && taken < longestText;) {
        const base::Utf8Number read = base::utf8At(text, at);
        at += read.isCharacter() ? read.size : 1;
        const char32_t c = read.isCharacter() ? read.number : base::replacementCharacter;
        const bool blank = isControl(c) || c == U' ';
        if (isUnseen(c) || (blank && result.empty()))
            continue;
        base::appendUtf8(result, blank ? U' ' : c);
        ++taken;
    }
    result.erase(result.find_last_not_of(' ') + 1);
    return result;
}
