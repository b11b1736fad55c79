#include "identify/identification.h"

#include "identify/fingerprint.h"
#include "log.h"

using audiocore::Decoding;
using audiocore::Fingerprint;
using audiocore::Identification;

namespace {
IdentifyStatus statusOf(const Fingerprint& fingerprint)
{
    switch (fingerprint.result) {
    case Decoding::Done:
        return fingerprint.text.empty() || fingerprint.milliseconds <= 0 ? IDENTIFY_TOO_SHORT
                                                                         : IDENTIFY_FOUND;
    case Decoding::Cancelled:
        return IDENTIFY_CANCELLED;
    case Decoding::Unreadable:
        return IDENTIFY_NO_FILE;
    default:
        return IDENTIFY_NO_AUDIO;
    }
}
} // namespace

Identification audiocore::identifyFile(const std::string& path, const Cancellation& cancellation)
{
    Identification result;
    const Fingerprint fingerprint = fingerprintOf(path, cancellation);
    result.status = statusOf(fingerprint);
    if (result.status != IDENTIFY_FOUND)
        return result;
    logLine(path, "cannot be identified: no service is set up");
    result.status = IDENTIFY_NO_KEY;
    return result;
}
