#include "identify/mediainput.h"

#include "base/platform.h"
#include "media/formats.h"

using audiocore::MediaInput;

namespace {
constexpr std::chrono::seconds longestWork{60};
/// The largest pictures and other data before and between the sounds take less.
constexpr std::int64_t mostWithoutProgress = 64 * 1024 * 1024;
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
    if (m_file)
        std::fclose(m_file);
}

bool MediaInput::isInterrupted() const noexcept
{
    return m_cancellation.isCancelled() || m_withoutProgress > mostWithoutProgress ||
           Cancellation::Clock::now() > m_deadline;
}

void MediaInput::noteProgress()
{
    m_withoutProgress = 0;
}

std::size_t MediaInput::readAt(std::int64_t position, void* bytes, std::size_t count) noexcept
{
    if (!m_view || isInterrupted())
        return 0;
    const std::size_t got = m_view->readAt(m_file, position, bytes, count);
    m_withoutProgress += std::int64_t(got);
    return got;
}

AVFormatContext* MediaInput::demuxer()
{
    if (!m_opened && m_view)
        m_opened = m_demuxer.open(allDemuxers());
    return m_opened;
}
