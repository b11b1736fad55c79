#include "identify/coverart.h"

namespace coverart = audiocore::coverart;

namespace {
constexpr std::size_t largestPicture = 20 * 1024 * 1024;

bool startsWith(const std::string& bytes, const std::string& magic)
{
    return bytes.size() > magic.size() && bytes.compare(0, magic.size(), magic) == 0;
}
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
    return startsWith(bytes, "\xFF\xD8\xFF") || startsWith(bytes, "\x89PNG\r\n\x1A\n");
}
