#pragma once

#include "identify/cancellation.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace audiocore {
enum class Decoding {
    Done,
    Cancelled,
    Unreadable, ///< no regular file that can be read
    NoAudio     ///< nothing in it decodes
};

struct DecodedPart
{
    Decoding result = Decoding::NoAudio;
    /// The whole file's length as its container tells it, or as it is found by decoding to the end.
    std::int64_t milliseconds = 0;
    /// Whether there may be more that is wanted, and decoding it was given up.
    bool isCutShort = false;
};

/// Receives signed 16-bit samples of one channel.
using SampleSink = std::function<void(const std::int16_t* samples, std::size_t count)>;

/// Decodes the beginning of a music file, up to `seconds`, to one channel at the sample rate. Reads this one
/// regular file and nothing that it points to; broken parts are passed over. Failures are logged.
DecodedPart decodeBeginning(const std::string& path, int seconds, int sampleRate,
                            const Cancellation& cancellation, const SampleSink& sink);
} // namespace audiocore
