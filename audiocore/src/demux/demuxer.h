#pragma once

#include <cstdint>
#include <string>

struct AVFormatContext;
struct AVIOContext;

namespace audiocore {
class ForeignBytes;

/// FFmpeg's view of one file: bytes that are handed to it. Whatever they say, no other file and no address is
/// opened.
class Demuxer
{
public:
    /// The bytes must outlive it.
    explicit Demuxer(ForeignBytes& bytes) : m_bytes(bytes) {}
    ~Demuxer();
    Demuxer(const Demuxer&) = delete;
    Demuxer& operator=(const Demuxer&) = delete;

    /// Reads the headers of a file of whichever of these kinds, which are FFmpeg's names with commas; null
    /// for another one. Owned by this object. Once.
    AVFormatContext* open(const std::string& kinds);
    /// The same of a file that nobody needs to guess the kind of, with so many streams at the most.
    AVFormatContext* openAs(const char* kind, int mostStreams);

private:
    static int readPacket(void* self, std::uint8_t* bytes, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);
    bool prepare();
    bool isFlooded() const;

    ForeignBytes& m_bytes;
    std::int64_t m_position = 0;
    AVIOContext* m_io = nullptr;
    AVFormatContext* m_context = nullptr;
};
} // namespace audiocore
