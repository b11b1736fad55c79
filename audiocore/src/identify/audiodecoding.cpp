#include "identify/audiodecoding.h"

#include "base/checkedmath.h"
#include "base/log.h"
#include "identify/mediainput.h"
#include "identify/resampler.h"
#include "media/soundlimits.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <memory>

using audiocore::DecodedPart;
using audiocore::MediaInput;

namespace {
struct FreeCodec
{
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
};
struct FreePacket
{
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeFrame
{
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

/// The decoder of a container's main audio stream.
class AudioStream
{
public:
    explicit AudioStream(AVFormatContext* demuxer) : m_demuxer(demuxer)
    {
        const AVCodec* codec = nullptr;
        m_index = av_find_best_stream(demuxer, AVMEDIA_TYPE_AUDIO, -1, -1, &codec, 0);
        if (m_index < 0 || !codec)
            return;
        for (unsigned int i = 0; i < demuxer->nb_streams; ++i)
            if (int(i) != m_index)
                demuxer->streams[i]->discard = AVDISCARD_ALL;
        m_codec.reset(avcodec_alloc_context3(codec));
        const AVStream* stream = demuxer->streams[m_index];
        if (!m_codec || stream->codecpar->sample_rate > audiocore::mostSampleRate ||
            avcodec_parameters_to_context(m_codec.get(), stream->codecpar) < 0) {
            m_codec.reset();
            return;
        }
        m_codec->pkt_timebase = stream->time_base;
        m_codec->request_sample_fmt = AV_SAMPLE_FMT_S16;
        if (avcodec_open2(m_codec.get(), codec, nullptr) < 0)
            m_codec.reset();
    }

    bool isOpen() const { return m_codec && m_packet && m_frame; }

    /// The next frame that decodes; null at the end.
    const AVFrame* next(MediaInput& input)
    {
        while (!input.isInterrupted()) {
            const int got = avcodec_receive_frame(m_codec.get(), m_frame.get());
            if (got >= 0) {
                input.noteProgress();
                return m_frame.get();
            }
            if (got == AVERROR_EOF || (got == AVERROR(EAGAIN) && m_ended))
                return nullptr;
            if (!m_ended)
                feed();
        }
        return nullptr;
    }

private:
    /// Hands the decoder one packet, or the end; a packet that it does not take is passed over.
    void feed()
    {
        if (av_read_frame(m_demuxer, m_packet.get()) < 0) {
            m_ended = true;
            avcodec_send_packet(m_codec.get(), nullptr);
            return;
        }
        if (m_packet->stream_index == m_index)
            avcodec_send_packet(m_codec.get(), m_packet.get());
        av_packet_unref(m_packet.get());
    }

    AVFormatContext* m_demuxer;
    int m_index = -1;
    bool m_ended = false;
    std::unique_ptr<AVCodecContext, FreeCodec> m_codec;
    std::unique_ptr<AVPacket, FreePacket> m_packet{av_packet_alloc()};
    std::unique_ptr<AVFrame, FreeFrame> m_frame{av_frame_alloc()};
};

/// Passes on samples until there are enough of them, and counts them all.
class LimitedSink
{
public:
    LimitedSink(const audiocore::SampleSink& sink, std::size_t limit) : m_sink(sink), m_left(limit) {}

    void operator()(const std::vector<std::int16_t>& samples)
    {
        m_total += std::int64_t(samples.size());
        const std::size_t count = std::min(samples.size(), m_left);
        if (count > 0)
            m_sink(samples.data(), count);
        m_left -= count;
    }
    bool isFull() const { return m_left == 0; }
    std::int64_t total() const { return m_total; }

private:
    const audiocore::SampleSink& m_sink;
    std::size_t m_left;
    std::int64_t m_total = 0;
};

/// Decodes what the sink wants, or all of it for a container that does not tell its length.
void decodeInto(LimitedSink& sink, AVFormatContext* demuxer, MediaInput& input, int sampleRate)
{
    AudioStream stream(demuxer);
    if (!stream.isOpen())
        return;
    const bool measure = demuxer->duration <= 0;
    audiocore::Resampler resampler(sampleRate);
    while (measure || !sink.isFull()) {
        const AVFrame* frame = stream.next(input);
        if (!frame)
            break;
        sink(resampler.convert(*frame));
    }
}
} // namespace

DecodedPart audiocore::decodeBeginning(const std::string& path, int seconds, int sampleRate,
                                       const Cancellation& cancellation, const SampleSink& sink)
{
    DecodedPart part;
    MediaInput input(path, cancellation);
    if (!input.isOpen()) {
        base::logLine(path, "is no file that can be read");
        part.result = Decoding::Unreadable;
        return part;
    }
    LimitedSink limited(sink, std::size_t(seconds) * std::size_t(sampleRate));
    if (AVFormatContext* demuxer = input.demuxer()) {
        decodeInto(limited, demuxer, input, sampleRate);
        part.milliseconds = demuxer->duration > 0 ? demuxer->duration / (AV_TIME_BASE / 1000)
                                                  : base::checked::scaled(limited.total(), 1000, sampleRate);
    }
    part.isCutShort = !limited.isFull() && input.isInterrupted();
    if (cancellation.isCancelled()) {
        part.result = Decoding::Cancelled;
    } else if (limited.total() > 0) {
        part.result = Decoding::Done;
    } else {
        base::logLine(path, input.isInterrupted() ? "is damaged: decoding it would not end"
                                                  : "holds no audio that can be decoded");
        part.result = Decoding::NoAudio;
    }
    return part;
}
