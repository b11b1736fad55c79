#pragma once

#include "identify/audiodecoding.h"

#include <cstdint>
#include <string>

namespace audiocore {
struct Fingerprint
{
    Decoding result = Decoding::NoAudio;
    std::string text;              ///< as the lookup service takes it; empty when the audio is too short
    std::int64_t milliseconds = 0; ///< the whole file's length
};

/// The acoustic fingerprint of a file's first two minutes.
Fingerprint fingerprintOf(const std::string& path, const Cancellation& cancellation);
} // namespace audiocore
