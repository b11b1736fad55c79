// A module that tests load to hear what FFmpeg hears in a file.
#include "listening.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/dict.h>
#include <libavutil/log.h>
#include <libswresample/swresample.h>
}

#include <memory>
#include <vector>

namespace {
struct Freeing
{
    void operator()(AVFormatContext* file) const { avformat_close_input(&file); }
    void operator()(AVCodecContext* decoder) const { avcodec_free_context(&decoder); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(SwrContext* resampler) const { swr_free(&resampler); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Freeing>;

class Track
{
public:
    Track(const AVStream& stream, int rate, Listening::Take take, void* to);

    bool canBeHeard() const { return m_decoder != nullptr; }
    /// Whether the packet, or with none what is left, is decoded.
    bool hear(const AVPacket* packet);

private:
    void give();
    void giveResampled();
    void give(const std::uint8_t* bytes, int samples, int sizeOfSample) const
    {
        if (samples > 0)
            m_take(m_to, bytes, std::size_t(samples) * std::size_t(sizeOfSample));
    }

    Owned<AVCodecContext> m_decoder;
    Owned<AVFrame> m_frame{av_frame_alloc()};
    Owned<SwrContext> m_resampler;
    int m_rate;
    Listening::Take m_take;
    void* m_to;
};

Track::Track(const AVStream& stream, int rate, Listening::Take take, void* to)
    : m_rate(rate), m_take(take), m_to(to)
{
    const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
    Owned<AVCodecContext> decoder(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!decoder || avcodec_parameters_to_context(decoder.get(), stream.codecpar) < 0)
        return;
    decoder->pkt_timebase = stream.time_base; // without which nothing is left out of the first packets
    if (avcodec_open2(decoder.get(), codec, nullptr) >= 0)
        m_decoder = std::move(decoder);
}

bool Track::hear(const AVPacket* packet)
{
    bool whole = avcodec_send_packet(m_decoder.get(), packet) >= 0;
    int got = 0;
    while ((got = avcodec_receive_frame(m_decoder.get(), m_frame.get())) >= 0)
        give();
    whole = whole && (got == AVERROR(EAGAIN) || got == AVERROR_EOF);
    if (!packet && m_resampler)
        giveResampled();
    return whole;
}

void Track::give()
{
    if (m_rate > 0) {
        giveResampled();
        return;
    }
    const auto format = AVSampleFormat(m_frame->format);
    const int channels = m_frame->ch_layout.nb_channels;
    const int planes = av_sample_fmt_is_planar(format) ? channels : 1;
    for (int plane = 0; plane < planes; ++plane)
        give(m_frame->extended_data[plane], m_frame->nb_samples * (channels / planes),
             av_get_bytes_per_sample(format));
}

/// The frame at hand, or, when it is empty, what the resampler still has.
void Track::giveResampled()
{
    if (!m_resampler) {
        AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
        SwrContext* resampler = nullptr;
        swr_alloc_set_opts2(&resampler, &mono, AV_SAMPLE_FMT_FLT, m_rate, &m_frame->ch_layout,
                            AVSampleFormat(m_frame->format), m_frame->sample_rate, 0, nullptr);
        m_resampler.reset(resampler);
        if (!resampler || swr_init(resampler) < 0)
            return;
    }
    const int most = swr_get_out_samples(m_resampler.get(), m_frame->nb_samples);
    std::vector<float> samples(std::size_t(most > 0 ? most : 0));
    auto* out = reinterpret_cast<std::uint8_t*>(samples.data());
    const auto** in =
        const_cast<const std::uint8_t**>(m_frame->nb_samples > 0 ? m_frame->extended_data : nullptr);
    give(out, swr_convert(m_resampler.get(), &out, most, in, m_frame->nb_samples), int(sizeof(float)));
}

Owned<AVFormatContext> opened(const char* path)
{
    av_log_set_level(AV_LOG_QUIET);
    AVFormatContext* file = nullptr;
    if (avformat_open_input(&file, path, nullptr, nullptr) < 0)
        return nullptr;
    Owned<AVFormatContext> owned(file);
    return avformat_find_stream_info(file, nullptr) < 0 ? nullptr : std::move(owned);
}

double secondsOf(std::int64_t length, AVRational unit)
{
    return length == AV_NOPTS_VALUE ? 0 : double(length) * av_q2d(unit);
}

void giveTags(const AVDictionary* tags, bool ofFile, Listening::TakeTag take, void* to)
{
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(tags, "", tag, AV_DICT_IGNORE_SUFFIX)))
        take(to, ofFile, tag->key, tag->value);
}

int firstSoundOf(AVFormatContext* file)
{
    return file ? av_find_best_stream(file, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0) : -1;
}
} // namespace

Listening::Figures askFile(const char* path, Listening::TakeTag take, void* to)
{
    const Owned<AVFormatContext> file = opened(path);
    const int first = firstSoundOf(file.get());
    if (first < 0)
        return {};
    const AVStream& track = *file->streams[first];
    giveTags(track.metadata, false, take, to);
    giveTags(file->metadata, true, take, to);
    return {secondsOf(file->duration, {1, AV_TIME_BASE}), file->bit_rate, track.codecpar->sample_rate,
            secondsOf(track.duration, track.time_base), track.codecpar->bit_rate};
}

std::int64_t weighFile(const char* path)
{
    const Owned<AVFormatContext> file = opened(path);
    const int first = firstSoundOf(file.get());
    const Owned<AVPacket> packet(av_packet_alloc());
    std::int64_t bytes = 0;
    while (first >= 0 && av_read_frame(file.get(), packet.get()) >= 0) {
        bytes += packet->stream_index == first ? packet->size : 0;
        av_packet_unref(packet.get());
    }
    return bytes;
}

int listenToFile(const char* path, int rate, Listening::Take take, void* to)
{
    const Owned<AVFormatContext> file = opened(path);
    if (!file)
        return -1;
    std::vector<std::unique_ptr<Track>> tracks(file->nb_streams);
    bool any = false;
    for (unsigned int i = 0; i < file->nb_streams && !(rate > 0 && any); ++i) {
        if (file->streams[i]->codecpar->codec_type != AVMEDIA_TYPE_AUDIO)
            continue;
        tracks[i] = std::make_unique<Track>(*file->streams[i], rate, take, to);
        if (!tracks[i]->canBeHeard())
            return -1;
        any = true;
    }
    int damaged = 0;
    const Owned<AVPacket> packet(av_packet_alloc());
    int got = 0;
    while ((got = av_read_frame(file.get(), packet.get())) >= 0) {
        if (const auto index = std::size_t(packet->stream_index); index < tracks.size() && tracks[index])
            damaged += tracks[index]->hear(packet.get()) ? 0 : 1;
        av_packet_unref(packet.get());
    }
    for (const auto& track : tracks)
        damaged += !track || track->hear(nullptr) ? 0 : 1;
    return damaged + (got == AVERROR_EOF ? 0 : 1);
}
