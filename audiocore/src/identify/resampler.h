#pragma once

#include <cstdint>
#include <memory>
#include <vector>

struct AVFrame;
struct SwrContext;

namespace audiocore {
/// Turns decoded frames into signed 16-bit samples of one channel at one rate, with the filter that the
/// public fingerprints were made with. Frames may change their shape from one to the next.
class Resampler
{
public:
    explicit Resampler(int sampleRate);
    ~Resampler();
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    /// The samples that came out; valid until the next call. None for a frame that makes no sense. What the
    /// filter holds back at the end stays there: the public fingerprints were made without it.
    const std::vector<std::int16_t>& convert(const AVFrame& frame);

private:
    struct Shape;

    bool fit(const AVFrame& frame);

    const int m_sampleRate;
    std::unique_ptr<Shape> m_shape;
    SwrContext* m_converter = nullptr;
    std::vector<std::int16_t> m_samples;
};
} // namespace audiocore
