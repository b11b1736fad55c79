#include "demux/demuxer.h"

#include "media/lastway.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/log.h>
}

#include <limits>

using audiocore::Demuxer;
using audiocore::ForeignBytes;

namespace {
constexpr int ioBufferSize = 16 * 1024;

int openNothingElse(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**)
{
    return AVERROR(EACCES);
}

/// Opens the prepared context, or frees it.
AVFormatContext* opened(AVFormatContext*& context, const AVInputFormat* kind, const std::string& kinds)
{
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", kinds.c_str(), 0);
    av_dict_set(&options, "protocol_whitelist", "none", 0);
    // Frees the context itself when it fails.
    avformat_open_input(&context, nullptr, kind, &options);
    av_dict_free(&options);
    return context;
}
} // namespace

Demuxer::~Demuxer()
{
    avformat_close_input(&m_context);
    if (m_io)
        av_freep(static_cast<void*>(&m_io->buffer)); // takes any pointer's address
    avio_context_free(&m_io);
}

AVFormatContext* Demuxer::open(const std::string& kinds)
{
    if (prepare() && opened(m_context, nullptr, kinds) && avformat_find_stream_info(m_context, nullptr) < 0)
        avformat_close_input(&m_context);
    return m_context;
}

AVFormatContext* Demuxer::openAs(const char* kind, int mostStreams)
{
    const AVInputFormat* const known = av_find_input_format(kind);
    if (!known || !prepare())
        return nullptr;
    m_context->max_streams = mostStreams;
    return opened(m_context, known, kind);
}

/// Each further one of what is kept costs a search through all before.
bool Demuxer::isFlooded() const
{
    constexpr int mostFields = 1000;
    constexpr unsigned int mostChapters = 10000;
    if (!m_context)
        return false;
    int fields = av_dict_count(m_context->metadata);
    for (unsigned int i = 0; i < m_context->nb_streams; ++i)
        fields += av_dict_count(m_context->streams[i]->metadata);
    return fields > mostFields || m_context->nb_chapters > mostChapters;
}

int Demuxer::readPacket(void* self, std::uint8_t* bytes, int size)
{
    auto* demuxer = static_cast<Demuxer*>(self);
    if (demuxer->m_bytes.isInterrupted() || demuxer->isFlooded())
        return AVERROR_EXIT;
    const std::size_t got = demuxer->m_bytes.readAt(demuxer->m_position, bytes, std::size_t(size));
    demuxer->m_position += std::int64_t(got);
    return got > 0 ? int(got) : AVERROR_EOF;
}

std::int64_t Demuxer::seek(void* self, std::int64_t offset, int whence)
{
    auto* demuxer = static_cast<Demuxer*>(self);
    const std::int64_t size = demuxer->m_bytes.size();
    if (whence & AVSEEK_SIZE)
        return size;
    std::int64_t base = 0;
    if ((whence & ~AVSEEK_FORCE) == SEEK_CUR)
        base = demuxer->m_position;
    else if ((whence & ~AVSEEK_FORCE) == SEEK_END)
        base = size;
    if (offset > std::numeric_limits<std::int64_t>::max() - base || base + offset < 0)
        return AVERROR(EINVAL);
    demuxer->m_position = base + offset;
    return demuxer->m_position;
}

bool Demuxer::prepare()
{
    av_log_set_level(AV_LOG_QUIET);
    auto* buffer = static_cast<unsigned char*>(av_malloc(ioBufferSize));
    m_io = buffer ? avio_alloc_context(buffer, ioBufferSize, 0, this, readPacket, nullptr, seek) : nullptr;
    if (!m_io)
        av_free(buffer);
    m_context = m_io ? avformat_alloc_context() : nullptr;
    if (!m_context)
        return false;
    m_context->pb = m_io;
    m_context->flags |= AVFMT_FLAG_CUSTOM_IO;
    m_context->io_open = openNothingElse;
    m_context->interrupt_callback.callback = [](void* bytes) {
        return int(static_cast<ForeignBytes*>(bytes)->isInterrupted());
    };
    m_context->interrupt_callback.opaque = &m_bytes;
    return true;
}
