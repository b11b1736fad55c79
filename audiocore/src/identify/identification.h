#pragma once

#include "audiocore/iaudioidentifier.h"
#include "identify/cancellation.h"
#include "identify/services.h"

#include <array>
#include <string>

namespace audiocore {
/// What one run found out.
struct Identification
{
    IdentifyStatus status = IDENTIFY_NOT_RUN;
    std::array<std::u32string, TAG_TRACK + 1> texts; ///< by TagItemType, empty when absent
    std::string picture;                             ///< the picture file's bytes, empty when absent
    double score = 0; ///< how good the match is, 0 to 1: the service's for the sound, the fit of the tags
};

/// Identifies the file at the path by its sound, or else, where there is no key for that or nothing that
/// sounds, or nobody knows the sound, by what it says of itself. Returns soon after a cancellation, and when
/// the services' patience is at its end. Failures are logged.
Identification identifyFile(const std::string& path, const Services& services,
                            const Cancellation& cancellation);
} // namespace audiocore
