#include "identify/address.h"

#include <curl/curl.h>

#include <memory>
#include <regex>

using audiocore::AddressKind;

namespace {
struct FreeUrl
{
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

std::string partOf(CURLU* url, CURLUPart which)
{
    char* part = nullptr;
    if (curl_url_get(url, which, &part, 0) != CURLUE_OK)
        return std::string();
    std::string result(part);
    curl_free(part);
    return result;
}

/// Takes numeric addresses in the one form that the library brings them all into.
bool isLoopback(const std::string& host)
{
    static const std::regex numeric(R"(127(\.(25[0-5]|2[0-4]\d|1\d\d|[1-9]?\d)){3})");
    return host == "localhost" || host == "[::1]" || std::regex_match(host, numeric);
}
} // namespace

AddressKind audiocore::kindOf(const std::string& address)
{
    const std::unique_ptr<CURLU, FreeUrl> url(curl_url());
    if (!url || curl_url_set(url.get(), CURLUPART_URL, address.c_str(), 0) != CURLUE_OK)
        return AddressKind::Refused;
    const std::string scheme = partOf(url.get(), CURLUPART_SCHEME);
    if (scheme == "https")
        return AddressKind::Https;
    const bool loopback = isLoopback(partOf(url.get(), CURLUPART_HOST));
    return scheme == "http" && loopback ? AddressKind::LoopbackHttp : AddressKind::Refused;
}

bool audiocore::mayRedirect(AddressKind from, AddressKind to)
{
    return to == AddressKind::Https || (to == AddressKind::LoopbackHttp && from == AddressKind::LoopbackHttp);
}

std::string audiocore::percentEncoded(const std::string& text)
{
    static const char digits[] = "0123456789ABCDEF";
    static const std::string plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    std::string out;
    for (const char c : text) {
        if (plain.find(c) != std::string::npos) {
            out += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        out += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    return out;
}
