#pragma once

#include "identify/fingerprint.h"
#include "identify/httpclient.h"
#include "identify/services.h"

#include <optional>
#include <string>
#include <vector>

/// The AcoustID web service: a fingerprint in, recordings out.
namespace audiocore::acoustid {
/// A recording that the fingerprint may be of.
struct Candidate
{
    std::string recording; ///< its identifier in the MusicBrainz database
    double score = 0;      ///< 0 to 1
    double seconds = 0;    ///< its length, 0 when unknown
    double sources = 0;    ///< how many people sent the fingerprint in under it
};

struct Lookup
{
    bool understood = false;
    bool refused = false; ///< the service says that something is wrong
    std::string error;    ///< what, when it says so
    std::vector<Candidate> candidates;
};

HttpRequest lookupRequest(const ServiceAddresses& addresses, const Fingerprint& fingerprint);
Lookup readLookup(const std::string& answer);
/// The candidate with the best score above 0.6 whose length lies within 7 seconds of the file's, of equal
/// scores the one with the most sources; null when there is none.
const Candidate* chooseRecording(const std::vector<Candidate>& candidates, std::int64_t milliseconds);
} // namespace audiocore::acoustid
