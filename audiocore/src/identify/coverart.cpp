#include "identify/coverart.h"

#include "base/picturelimits.h"

#include <cstdint>

namespace coverart = audiocore::coverart;

namespace {
constexpr std::size_t largestPicture = 20 * 1024 * 1024;

bool startsWith(const std::string& bytes, const std::string& magic)
{
    return bytes.compare(0, magic.size(), magic) == 0;
}

/// The number in so many bytes, the greatest first; 0 when it goes past the end.
std::uint32_t numberAt(const std::string& bytes, std::size_t at, std::size_t length)
{
    std::uint32_t number = 0;
    if (at > bytes.size() || length > bytes.size() - at)
        return number;
    for (std::size_t i = 0; i < length; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
    return number;
}

bool canBeShown(std::uint64_t width, std::uint64_t height)
{
    return width > 0 && height > 0 && width * height <= std::uint64_t(base::mostPixels);
}

namespace jpeg {
constexpr std::uint32_t endOfImage = 0xD9;
constexpr std::uint32_t startOfScan = 0xDA;

/// The code of the next marker, 0 when none is left; moves behind it. Passes over a scan's compressed data,
/// in which an FF is followed by a zero or by a code of D0 to D7.
std::uint32_t nextMarker(const std::string& bytes, std::size_t& at)
{
    for (; at + 1 < bytes.size(); ++at) {
        const std::uint32_t code = numberAt(bytes, at + 1, 1);
        if (bytes[at] != '\xFF' || code == 0 || code == 0xFF || (code >= 0xD0 && code <= 0xD7))
            continue;
        at += 2;
        return code;
    }
    return 0;
}

bool beginsFrame(std::uint32_t marker)
{
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// Whether a frame header begins here: its length, precision, height, width and number of components.
bool isFrameHeader(const std::string& bytes, std::size_t at)
{
    const std::uint32_t components = numberAt(bytes, at + 7, 1);
    return components >= 1 && components <= 4 && numberAt(bytes, at, 2) == 8 + 3 * components &&
           canBeShown(numberAt(bytes, at + 5, 2), numberAt(bytes, at + 3, 2));
}

bool isWhole(const std::string& bytes)
{
    bool hasFrame = false;
    bool hasScan = false;
    std::size_t at = 2;
    while (const std::uint32_t marker = nextMarker(bytes, at)) {
        if (marker == endOfImage)
            return hasScan;
        if (beginsFrame(marker)) {
            if (!isFrameHeader(bytes, at))
                return false;
            hasFrame = true;
        }
        if (marker == startOfScan)
            hasScan = hasFrame;
        at += numberAt(bytes, at, 2);
    }
    return false;
}
} // namespace jpeg

namespace png {
constexpr std::size_t around = 12; // a chunk's length and type before its data, its checksum behind

bool isWhole(const std::string& bytes)
{
    std::size_t at = 8;
    if (numberAt(bytes, at, 4) != 13 || bytes.compare(at + 4, 4, "IHDR") != 0 ||
        !canBeShown(numberAt(bytes, at + 8, 4), numberAt(bytes, at + 12, 4)))
        return false;
    bool hasData = false;
    while (bytes.size() - at >= around) {
        const std::size_t length = numberAt(bytes, at, 4);
        if (length > bytes.size() - at - around)
            return false;
        if (bytes.compare(at + 4, 4, "IEND") == 0)
            return hasData;
        hasData = hasData || bytes.compare(at + 4, 4, "IDAT") == 0;
        at += around + length;
    }
    return false;
}
} // namespace png
} // namespace

audiocore::HttpRequest coverart::frontRequest(const ServiceAddresses& addresses, const std::string& release)
{
    HttpRequest request;
    request.address = addresses.coverArt + "/release/" + release + "/front-500";
    request.largestAnswer = largestPicture;
    return request;
}

bool coverart::isPicture(const std::string& bytes)
{
    if (startsWith(bytes, "\xFF\xD8\xFF"))
        return jpeg::isWhole(bytes);
    return startsWith(bytes, "\x89PNG\r\n\x1A\n") && png::isWhole(bytes);
}
