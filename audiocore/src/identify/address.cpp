#include "identify/address.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>
#include <new>
#include <sstream>

using audiocore::AddressKind;

namespace {
struct FreeUrl
{
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

struct FreeByCurl
{
    void operator()(char* text) const { curl_free(text); }
};

std::string partOf(CURLU* url, CURLUPart which)
{
    char* part = nullptr;
    if (curl_url_get(url, which, &part, 0) != CURLUE_OK)
        return std::string();
    const std::unique_ptr<char, FreeByCurl> owned(part);
    return part;
}

bool isByte(const std::string& text)
{
    return !text.empty() && text.size() <= 3 && text.find_first_not_of("0123456789") == std::string::npos &&
           std::stoi(text) <= 255;
}

/// Takes an address in the one form that the library brings all numeric ones into.
bool isLoopbackNumber(const std::string& host)
{
    if (host.compare(0, 4, "127.") != 0 || std::count(host.begin(), host.end(), '.') != 3)
        return false;
    std::istringstream parts(host);
    int bytes = 0;
    for (std::string part; std::getline(parts, part, '.'); ++bytes)
        if (!isByte(part))
            return false;
    return bytes == 4;
}

bool isLoopback(const std::string& host)
{
    return host == "localhost" || host == "[::1]" || isLoopbackNumber(host);
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
    const std::unique_ptr<char, FreeByCurl> encoded(
        curl_easy_escape(nullptr, text.c_str(), int(text.size())));
    if (!encoded)
        throw std::bad_alloc();
    return encoded.get();
}
