#include "identify/mediainput.h"

#include "base/platform.h"
#include "media/formats.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/log.h>
}

#include <limits>

using audiocore::MediaInput;

namespace {
constexpr std::chrono::seconds longestWork{60};
constexpr int ioBufferSize = 16 * 1024;
/// The largest pictures and other data before and between the sounds take less.
constexpr std::int64_t mostWithoutProgress = 64 * 1024 * 1024;

int openNothingElse(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**)
{
    return AVERROR(EACCES);
}
} // namespace

MediaInput::MediaInput(const std::string& path, const Cancellation& cancellation)
    : m_cancellation(cancellation), m_deadline(Cancellation::Clock::now() + longestWork)
{
    m_file = base::openFile(path, false);
    base::FileState state;
    if (m_file && base::stateOf(m_file, state) && state.regular) {
        m_view = SoundView::of(m_file, path);
        m_size = m_view ? m_view->shownOf(state.size) : 0;
        return;
    }
    if (m_file)
        std::fclose(m_file);
    m_file = nullptr;
}

MediaInput::~MediaInput()
{
    avformat_close_input(&m_demuxer);
    if (m_io)
        av_freep(static_cast<void*>(&m_io->buffer)); // takes any pointer's address
    avio_context_free(&m_io);
    if (m_file)
        std::fclose(m_file);
}

bool MediaInput::isInterrupted() const
{
    return m_cancellation.isCancelled() || m_withoutProgress > mostWithoutProgress ||
           Cancellation::Clock::now() > m_deadline;
}

void MediaInput::noteProgress()
{
    m_withoutProgress = 0;
}

int MediaInput::readPacket(void* self, std::uint8_t* bytes, int size)
{
    auto* input = static_cast<MediaInput*>(self);
    if (!input->m_view || input->isInterrupted())
        return AVERROR_EXIT;
    const std::size_t got = input->m_view->readAt(input->m_file, input->m_position, bytes, std::size_t(size));
    input->m_position += std::int64_t(got);
    input->m_withoutProgress += std::int64_t(got);
    return got > 0 ? int(got) : AVERROR_EOF;
}

std::int64_t MediaInput::seek(void* self, std::int64_t offset, int whence)
{
    auto* input = static_cast<MediaInput*>(self);
    if (whence & AVSEEK_SIZE)
        return input->m_size;
    std::int64_t base = 0;
    if ((whence & ~AVSEEK_FORCE) == SEEK_CUR)
        base = input->m_position;
    else if ((whence & ~AVSEEK_FORCE) == SEEK_END)
        base = input->m_size;
    if (offset > std::numeric_limits<std::int64_t>::max() - base || base + offset < 0)
        return AVERROR(EINVAL);
    input->m_position = base + offset;
    return input->m_position;
}

bool MediaInput::prepare()
{
    av_log_set_level(AV_LOG_QUIET);
    auto* buffer = static_cast<unsigned char*>(av_malloc(ioBufferSize));
    m_io = buffer ? avio_alloc_context(buffer, ioBufferSize, 0, this, readPacket, nullptr, seek) : nullptr;
    if (!m_io)
        av_free(buffer);
    m_demuxer = m_io ? avformat_alloc_context() : nullptr;
    if (!m_demuxer)
        return false;
    m_demuxer->pb = m_io;
    m_demuxer->flags |= AVFMT_FLAG_CUSTOM_IO;
    m_demuxer->io_open = openNothingElse;
    m_demuxer->interrupt_callback.callback = [](void* self) {
        return int(static_cast<MediaInput*>(self)->isInterrupted());
    };
    m_demuxer->interrupt_callback.opaque = this;
    return true;
}

AVFormatContext* MediaInput::demuxer()
{
    if (m_demuxer || !m_view || !prepare())
        return m_demuxer;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", allDemuxers().c_str(), 0);
    av_dict_set(&options, "protocol_whitelist", "none", 0);
    // Frees the context itself when it fails.
    const int opened = avformat_open_input(&m_demuxer, nullptr, nullptr, &options);
    av_dict_free(&options);
    if (opened < 0 || avformat_find_stream_info(m_demuxer, nullptr) < 0)
        avformat_close_input(&m_demuxer);
    return m_demuxer;
}
