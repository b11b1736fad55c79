#include "identify/resampler.h"

#include "media/soundlimits.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <algorithm>

using audiocore::Resampler;

struct Resampler::Shape
{
    int format = AV_SAMPLE_FMT_NONE;
    int rate = 0;
    int channels = 0;

    bool operator==(const Shape& other) const
    {
        return format == other.format && rate == other.rate && channels == other.channels;
    }
};

namespace {
/// The layout of a frame's channels, or the usual one of their number.
void layoutOf(const AVFrame& frame, AVChannelLayout& layout)
{
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC ||
        av_channel_layout_copy(&layout, &frame.ch_layout) < 0)
        av_channel_layout_default(&layout, frame.ch_layout.nb_channels);
}

SwrContext* converterFor(const AVFrame& frame, int sampleRate)
{
    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    AVChannelLayout layout = {};
    layoutOf(frame, layout);
    SwrContext* converter = nullptr;
    const int made = swr_alloc_set_opts2(&converter, &mono, AV_SAMPLE_FMT_S16, sampleRate, &layout,
                                         AVSampleFormat(frame.format), frame.sample_rate, 0, nullptr);
    av_channel_layout_uninit(&layout);
    if (made < 0)
        return nullptr;
    av_opt_set_int(converter, "filter_size", 16, 0);
    av_opt_set_int(converter, "phase_shift", 8, 0);
    av_opt_set_int(converter, "linear_interp", 1, 0);
    av_opt_set_double(converter, "cutoff", 0.8, 0);
    if (swr_init(converter) < 0)
        swr_free(&converter);
    return converter;
}
} // namespace

Resampler::Resampler(int sampleRate) : m_sampleRate(sampleRate), m_shape(std::make_unique<Shape>()) {}

Resampler::~Resampler()
{
    swr_free(&m_converter);
}

bool Resampler::fit(const AVFrame& frame)
{
    const Shape shape{frame.format, frame.sample_rate, frame.ch_layout.nb_channels};
    if (m_converter && *m_shape == shape)
        return true;
    swr_free(&m_converter);
    if (!isSampleRate(frame.sample_rate) || frame.ch_layout.nb_channels <= 0)
        return false;
    m_converter = converterFor(frame, m_sampleRate);
    *m_shape = shape;
    return m_converter != nullptr;
}

const std::vector<std::int16_t>& Resampler::convert(const AVFrame& frame)
{
    m_samples.clear();
    const int space =
        frame.nb_samples > 0 && fit(frame) ? swr_get_out_samples(m_converter, frame.nb_samples) : 0;
    if (space <= 0)
        return m_samples;
    m_samples.resize(std::size_t(space));
    auto* out = reinterpret_cast<std::uint8_t*>(m_samples.data());
    const int got = swr_convert(m_converter, &out, space,
                                const_cast<const std::uint8_t**>(frame.extended_data), frame.nb_samples);
    m_samples.resize(std::size_t(std::max(got, 0)));
    return m_samples;
}
