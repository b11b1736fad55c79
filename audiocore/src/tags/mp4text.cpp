#include "tags/mp4text.h"

#include "base/text.h"
#include "tags/tagtext.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

using TagLib::ByteVector;

namespace {
constexpr unsigned int headSize = 4;
/// Languages below this one have an encoding of their own, all others UTF-8.
constexpr unsigned int firstIsoLanguage = 0x400;
constexpr unsigned int anyLanguage = 0x55C4; // "und"

/// What the bytes from 0x80 on stand for in the first of those encodings, which most of them share.
constexpr std::u32string_view macCharacters =
    U"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
    U"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";
static_assert(macCharacters.size() == 128);

std::string macText(const ByteVector& bytes)
{
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        base::appendUtf8(text, byte < 0x80 ? byte : macCharacters[byte - 0x80u]);
    }
    return text;
}

bool isAscii(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}
} // namespace

std::string audiocore::mp4PlainText(const ByteVector& content)
{
    if (content.size() < headSize || content.toUShort(0u) > content.size() - headSize)
        return readableText(content);
    const ByteVector bytes = content.mid(headSize, content.toUShort(0u));
    const bool isUtf8 = base::isUtf8(std::string(bytes.data(), bytes.size()));
    return content.toUShort(2u) < firstIsoLanguage && !isUtf8 ? macText(bytes) : readableText(bytes);
}

ByteVector audiocore::mp4PlainContent(const std::string& text, const ByteVector& old)
{
    if (text.size() > std::numeric_limits<std::uint16_t>::max())
        return ByteVector();
    unsigned int language = old.size() < headSize ? anyLanguage : old.toUShort(2u);
    if (language < firstIsoLanguage && !isAscii(text))
        language = anyLanguage;
    ByteVector content = ByteVector::fromShort(static_cast<short>(text.size()));
    content.append(ByteVector::fromShort(static_cast<short>(language)));
    return content.append(ByteVector(text.data(), unsigned(text.size())));
}
