#pragma once

#include "demux/demuxer.h"
#include "identify/cancellation.h"
#include "media/lastway.h"
#include "tags/soundview.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace audiocore {
/// One regular file, opened for demuxing. Whatever the file says, no other file and no address is opened.
class MediaInput final : public ForeignBytes
{
public:
    MediaInput(const std::string& path, const Cancellation& cancellation);
    ~MediaInput() override;
    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    /// Whether there is a regular file to read.
    bool isOpen() const { return m_file != nullptr; }
    /// Reads the container's headers; null when it is none of the music formats. Owned by this object.
    AVFormatContext* demuxer();
    /// Tells that something was decoded from what was read so far.
    void noteProgress();
    /// Whether the work is to stop: cancelled, or longer under way than any real file takes, or so much was
    /// read without progress that the demuxer would only gather rubbish.
    bool isInterrupted() const noexcept override;

    std::int64_t size() const override { return m_size; }
    std::size_t readAt(std::int64_t position, void* bytes, std::size_t count) noexcept override;

private:
    const Cancellation& m_cancellation;
    const Cancellation::Clock::time_point m_deadline;
    std::FILE* m_file = nullptr;
    std::optional<SoundView> m_view; ///< nothing for a file that no decoder may see
    std::int64_t m_size = 0;
    std::int64_t m_withoutProgress = 0; ///< bytes
    Demuxer m_demuxer{*this};
    AVFormatContext* m_opened = nullptr;
};
} // namespace audiocore
