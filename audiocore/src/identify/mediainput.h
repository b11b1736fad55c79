#pragma once

#include "identify/cancellation.h"
#include "tags/soundview.h"

#include <cstdint>
#include <cstdio>
#include <string>

struct AVFormatContext;
struct AVIOContext;

namespace audiocore {
/// One regular file, opened for demuxing. Whatever the file says, no other file and no address is opened.
class MediaInput
{
public:
    MediaInput(const std::string& path, const Cancellation& cancellation);
    ~MediaInput();
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
    bool isInterrupted() const;

private:
    static int readPacket(void* self, std::uint8_t* bytes, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);
    bool prepare();

    const Cancellation& m_cancellation;
    const Cancellation::Clock::time_point m_deadline;
    std::FILE* m_file = nullptr;
    std::optional<SoundView> m_view; ///< nothing for a file that no decoder may see
    std::int64_t m_size = 0;
    std::int64_t m_position = 0;
    std::int64_t m_withoutProgress = 0; ///< bytes
    AVIOContext* m_io = nullptr;
    AVFormatContext* m_demuxer = nullptr;
};
} // namespace audiocore
