#pragma once

namespace audiocore {
/// Hertz. No music has more, and resampling from more takes memory and time without an end.
constexpr int mostSampleRate = 768000;

constexpr bool isSampleRate(int rate)
{
    return rate > 0 && rate <= mostSampleRate;
}
} // namespace audiocore
