#pragma once

#include "identify/audiodecoding.h"

#include <cstdint>
#include <string>
#include <vector>

namespace audiocore {
struct Fingerprint
{
    Decoding result = Decoding::NoAudio;
    std::string text;              ///< as the lookup service takes it; empty when the audio is too short
    std::int64_t milliseconds = 0; ///< the whole file's length
};

/// The acoustic fingerprint of a file's first two minutes.
Fingerprint fingerprintOf(const std::string& path, const Cancellation& cancellation);

struct RawFingerprint
{
    Decoding result = Decoding::NoAudio;
    std::vector<std::uint32_t> values; ///< none when the audio is too short
};

/// The values that it consists of, for comparing. Where decoding was given up before the two minutes were
/// full there are none: on another day it might go further.
RawFingerprint rawFingerprintOf(const std::string& path, const Cancellation& cancellation);
} // namespace audiocore
