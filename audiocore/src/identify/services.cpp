#include "identify/services.h"

#include "identify/keyfile.h"

#include <algorithm>
#include <cstdlib>

using audiocore::HttpAnswer;
using audiocore::Patience;
using audiocore::RateLimit;
using audiocore::Service;
using audiocore::ServiceAddresses;
using audiocore::Services;

namespace {
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr seconds longestHold{10};

/// What the limits' owners ask for: three lookups a second there, one request a second here.
struct SharedLimits
{
    RateLimit acoustId{milliseconds(334)};
    RateLimit musicBrainz{milliseconds(1000)};
    RateLimit coverArt{milliseconds(0)};
};

std::string configured(const char* variable, const char* otherwise)
{
    const char* value = std::getenv(variable);
    std::string result = value && *value ? value : otherwise;
    while (!result.empty() && result.back() == '/')
        result.pop_back();
    return result;
}

/// Of the environment, of the user's file, or of the build.
std::string applicationKey()
{
    std::string key = configured("MELODRIFT_ACOUSTID_KEY", "");
    if (key.empty())
        key = audiocore::keyInFile();
    return key.empty() ? MELODRIFT_ACOUSTID_KEY : key;
}

bool asksToSlowDown(const HttpAnswer& answer)
{
    return answer.outcome == HttpAnswer::Outcome::Answered && (answer.code == 503 || answer.code == 429);
}
} // namespace

ServiceAddresses audiocore::configuredAddresses()
{
    return {configured("MELODRIFT_ACOUSTID_URL", "https://api.acoustid.org"),
            configured("MELODRIFT_MUSICBRAINZ_URL", "https://musicbrainz.org"),
            configured("MELODRIFT_COVERART_URL", "https://coverartarchive.org"), applicationKey()};
}

HttpAnswer Service::ask(const HttpRequest& request, const Cancellation& cancellation) const
{
    const auto turn = [this, &cancellation] { return m_limit.waitForTurn(cancellation); };
    for (bool again = false;; again = true) {
        HttpAnswer answer = m_client.send(request, cancellation, turn);
        if (!asksToSlowDown(answer))
            return answer;
        m_limit.holdFor(std::clamp(answer.retryAfter, seconds(1), longestHold)); // whoever asks next
        if (again || answer.retryAfter > longestHold)
            return answer;
    }
}

Services audiocore::sharedServices()
{
    static auto* limits = new SharedLimits; // kept to the end of the process, for threads that outlive main
    static const HttpClient client;
    return {configuredAddresses(), Service(client, limits->acoustId), Service(client, limits->musicBrainz),
            Service(client, limits->coverArt), Patience()};
}
