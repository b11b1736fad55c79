#pragma once

#include "identify/httpclient.h"
#include "identify/ratelimit.h"

#include <chrono>
#include <string>

namespace audiocore {
/// Where the services are.
struct ServiceAddresses
{
    std::string acoustId;
    std::string musicBrainz;
    std::string coverArt;
    std::string key; ///< of this application, for AcoustID; empty when there is none
};

/// The public services, or those that the environment variables MELODRIFT_ACOUSTID_URL,
/// MELODRIFT_MUSICBRAINZ_URL and MELODRIFT_COVERART_URL name; the key is MELODRIFT_ACOUSTID_KEY of the
/// environment, else of the user's file (keyfile.h), else of the build.
ServiceAddresses configuredAddresses();

/// One service: its pace and its manners.
class Service
{
public:
    Service(const HttpClient& client, RateLimit& limit) : m_client(client), m_limit(limit) {}

    /// Sends the request when its turn has come, and once more when the service asks to slow down and does
    /// not ask for more than ten seconds. Redirects wait for turns of their own, and whenever the service
    /// asks to slow down, the next request to it waits, whosever it is: as long as asked for, ten seconds at
    /// most.
    HttpAnswer ask(const HttpRequest& request, const Cancellation& cancellation) const;

private:
    const HttpClient& m_client;
    RateLimit& m_limit;
};

/// How long an identification may take.
struct Patience
{
    std::chrono::milliseconds decoding{12000}; ///< for the fingerprint
    std::chrono::milliseconds inAll{28000};
};

/// All that an identification needs of the network.
struct Services
{
    ServiceAddresses addresses;
    Service acoustId;
    Service musicBrainz;
    Service coverArt;
    Patience patience;
};

/// The configured services with the limits that all identifications of the process share.
Services sharedServices();
} // namespace audiocore
