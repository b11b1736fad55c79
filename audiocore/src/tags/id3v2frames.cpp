#include "tags/id3v2frames.h"

#include "tags/tagfields.h"

#include <algorithm>
#include <array>
#include <vector>

namespace id3v2 = audiocore::id3v2;

using TagLib::ByteVector;

namespace {
/// Every id under which some version says the item. What belongs to a date goes with its year.
const std::vector<std::string_view> knownIds[audiocore::textTypes] = {
    {"TIT2", "TT2"},
    {"TPE1", "TP1"},
    {"TALB", "TAL"},
    {"TCON", "TCO"},
    {"TDRC", "TRDC", "TYER", "TDAT", "TIME", "TYE", "TDA", "TIM"},
    {"TRCK", "TRK"}};

/// Some programs write the short ids into newer tags, filled up with a zero.
bool isId(std::string_view id, std::string_view name)
{
    return id.substr(0, name.size()) == name &&
           id.find_first_not_of('\0', name.size()) == std::string_view::npos;
}

unsigned int extendedHeaderSize(int version, const ByteVector& body)
{
    if (body.size() < 4)
        return body.size() + 1;
    return version == 4 ? id3v2::fromSevenBits(body.data())
                        : std::min(body.toUInt(0u), id3v2::largestBody) + 4;
}
} // namespace

std::optional<id3v2::TagSize> id3v2::sizeOfTag(std::string_view bytes)
{
    constexpr unsigned int footerSize = 10;
    constexpr int sizePlace = 6;
    const auto isSevenBits = [](char byte) { return (byte & 0x80) == 0; };
    if (bytes.size() < headerSize || bytes.substr(0, 3) != "ID3" ||
        !std::all_of(bytes.begin() + sizePlace, bytes.begin() + headerSize, isSevenBits))
        return std::nullopt;
    return TagSize{fromSevenBits(bytes.data() + sizePlace), bytes[5] & withFooter ? footerSize : 0};
}

bool id3v2::says(std::string_view id, int type)
{
    const auto& ids = knownIds[type];
    return std::any_of(ids.begin(), ids.end(), [id](std::string_view name) { return isId(id, name); });
}

int id3v2::typeOf(std::string_view id)
{
    int type = 0;
    while (type < textTypes && !says(id, type))
        ++type;
    return type;
}

bool id3v2::isPicture(std::string_view id)
{
    return isId(id, "APIC") || isId(id, "PIC");
}

bool id3v2::looksLikeId(std::string_view id)
{
    for (std::size_t i = 0; i < id.size(); ++i) {
        const char c = id[i];
        const bool filledUp = i == 3 && c == 0;
        if (!filledUp && !(c >= 'A' && c <= 'Z') && !(c >= '0' && c <= '9'))
            return false;
    }
    return !id.empty();
}

unsigned int id3v2::numberAt(const char* bytes, unsigned int count)
{
    unsigned int number = 0;
    for (unsigned int i = 0; i < count; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    return number;
}

unsigned int id3v2::fromSevenBits(const char* bytes)
{
    unsigned int number = 0;
    for (int i = 0; i < 4; ++i)
        number = number << 7 | (static_cast<unsigned char>(bytes[i]) & 0x7Fu);
    return number;
}

unsigned int id3v2::sizeWithoutFilling(std::string_view bytes)
{
    const std::size_t last = bytes.find_last_not_of('\0');
    return last == std::string_view::npos ? 0 : static_cast<unsigned int>(last) + 1;
}

void id3v2::putFrameSize(int version, char* place, unsigned int size)
{
    const int bits = version == 4 ? 7 : 8;
    const auto count = int(idSize(version));
    for (int i = 0; i < count; ++i)
        place[i] = char(size >> (bits * (count - 1 - i)) & (version == 4 ? 0x7F : 0xFF));
}

unsigned int id3v2::resynchronise(char* bytes, unsigned int size)
{
    unsigned int kept = 0;
    for (unsigned int i = 0; i < size; ++i) {
        const char c = bytes[i];
        bytes[kept++] = c;
        if (c == char(0xFF) && i + 1 < size && bytes[i + 1] == 0)
            ++i;
    }
    return kept;
}

id3v2::Wrapping id3v2::wrappingOf(int version, char flags)
{
    const bool newest = version == 4;
    const unsigned int group = flags & (newest ? 0x40 : 0x20) ? 1 : 0;
    const unsigned int length = newest && flags & 0x01 ? 4 : 0;
    return {(flags & (newest ? 0x08 | 0x04 : 0x80 | 0x40)) != 0, newest && (flags & frameUnsynchronised) != 0,
            group + length};
}

std::optional<unsigned int> id3v2::beginOfFrames(const ByteVector& header, ByteVector& body)
{
    const int version = static_cast<unsigned char>(header.data()[3]);
    const char flags = header.data()[5];
    if (version < 2 || version > 4 || (version == 2 && flags & extended))
        return std::nullopt;
    if (flags & unsynchronised && version < 4)
        body.resize(resynchronise(body.data(), body.size()));
    const unsigned int begin = flags & extended ? extendedHeaderSize(version, body) : 0;
    return begin <= body.size() ? std::optional<unsigned int>(begin) : std::nullopt;
}
