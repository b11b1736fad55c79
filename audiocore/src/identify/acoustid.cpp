#include "identify/acoustid.h"

#include "identify/address.h"
#include "identify/jsonreading.h"

#include <cmath>
#include <tuple>

namespace acoustid = audiocore::acoustid;
namespace json = audiocore::json;

namespace {
constexpr std::size_t largestAnswer = 10 * 1024 * 1024;
constexpr double leastScore = 0.6; // to be above
constexpr double mostSecondsApart = 7;

void addCandidates(std::vector<acoustid::Candidate>& candidates, const json::Value& result)
{
    const std::optional<double> score = json::number(result, "score");
    if (!score)
        return;
    for (const json::Value& recording : json::elements(json::member(result, "recordings"))) {
        acoustid::Candidate candidate;
        candidate.recording = json::identifier(recording, "id");
        candidate.score = *score;
        candidate.seconds = json::number(recording, "duration").value_or(0);
        candidate.sources = json::number(recording, "sources").value_or(0);
        if (!candidate.recording.empty())
            candidates.push_back(candidate);
    }
}

bool isMatch(const acoustid::Candidate& candidate, double seconds)
{
    return candidate.score > leastScore && candidate.seconds > 0 &&
           std::abs(candidate.seconds - seconds) <= mostSecondsApart;
}

bool isBetter(const acoustid::Candidate& one, const acoustid::Candidate& other)
{
    return std::tie(one.score, one.sources) > std::tie(other.score, other.sources);
}
} // namespace

audiocore::HttpRequest acoustid::lookupRequest(const ServiceAddresses& addresses,
                                               const Fingerprint& fingerprint)
{
    HttpRequest request;
    request.address = addresses.acoustId + "/v2/lookup";
    request.form = "format=json&client=" + percentEncoded(addresses.key) +
                   "&meta=recordings+sources&duration=" + std::to_string(fingerprint.milliseconds / 1000) +
                   "&fingerprint=" + percentEncoded(fingerprint.text);
    request.largestAnswer = largestAnswer;
    return request;
}

acoustid::Lookup acoustid::readLookup(const std::string& answer)
{
    Lookup lookup;
    const std::optional<json::Document> root = json::parse(answer);
    if (!root)
        return lookup;
    const std::string status = json::text(root->value(), "status");
    const json::Value& results = json::member(root->value(), "results");
    lookup.refused = status == "error";
    lookup.understood = lookup.refused || (status == "ok" && results.is_array());
    if (lookup.refused)
        lookup.error = json::text(json::member(root->value(), "error"), "message");
    if (status != "ok")
        return lookup;
    for (const json::Value& result : json::elements(results))
        addCandidates(lookup.candidates, result);
    return lookup;
}

const acoustid::Candidate* acoustid::chooseRecording(const std::vector<Candidate>& candidates,
                                                     std::int64_t milliseconds)
{
    const double seconds = double(milliseconds) / 1000;
    const Candidate* best = nullptr;
    for (const Candidate& candidate : candidates)
        if (isMatch(candidate, seconds) && (!best || isBetter(candidate, *best)))
            best = &candidate;
    return best;
}
