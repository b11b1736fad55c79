#include "media/mpegframes.h"

#include "base/checkedmath.h"

#include <taglib/tiostream.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

using audiocore::MpegStream;
using TagLib::ByteVector;

namespace {
constexpr long searchLimit = 1024 * 1024;
// The longer the search, the more of what looks like frames is none.
constexpr long nearby = 64 * 1024;
constexpr int framesNearby = 2;
constexpr int framesFarOff = 4;
constexpr long walkLimit = 128 * 1024 * 1024;

struct Frame
{
    int size = 0; ///< bytes, header included; 0: no frame starts here
    int sampleRate = 0;
    int samples = 0;
    int sideInfo = 0;      ///< bytes between header and a Xing header
    unsigned identity = 0; ///< header bits that stay the same all through a stream
};

/// Reads forward through a stream in blocks, small ones first: most streams are told by their first frames.
class Window
{
public:
    explicit Window(TagLib::IOStream& stream) : m_stream(stream), m_end(stream.length()) {}

    /// `count` bytes at `position`; null past the end. Valid until the next call.
    const unsigned char* at(long position, int count)
    {
        if (position < 0 || position + count > m_end)
            return nullptr;
        if (position < m_start || position + count > m_start + long(m_block.size())) {
            m_stream.seek(position);
            m_block = m_stream.readBlock(m_blockSize);
            m_blockSize = std::min(m_blockSize * 4, largestBlock);
            m_start = position;
            if (long(m_block.size()) < count)
                return nullptr;
        }
        return reinterpret_cast<const unsigned char*>(const_cast<const ByteVector&>(m_block).data()) +
               (position - m_start);
    }
    /// Where next from `position` on a frame may begin; `last` where that is not in front of it.
    long findSync(long position, long last)
    {
        while (const unsigned char* bytes = position < last ? at(position, 1) : nullptr) {
            const long inBlock = m_start + long(m_block.size()) - position;
            const long read = std::min(last - position, inBlock);
            if (const unsigned char* found = syncIn(bytes, bytes + read, bytes + inBlock))
                return position + (found - bytes);
            position += read;
        }
        return last;
    }
    long end() const { return m_end; }

private:
    static constexpr unsigned long largestBlock = 128 * 1024;

    /// In front of `end`, with the second byte told only where it is in front of `known`.
    static const unsigned char* syncIn(const unsigned char* bytes, const unsigned char* end,
                                       const unsigned char* known)
    {
        for (; bytes < end; ++bytes) {
            bytes = static_cast<const unsigned char*>(std::memchr(bytes, 0xFF, std::size_t(end - bytes)));
            if (!bytes || bytes + 1 == known || (bytes[1] & 0xE0) == 0xE0)
                return bytes;
        }
        return nullptr;
    }

    TagLib::IOStream& m_stream;
    const long m_end;
    long m_start = 0;
    unsigned long m_blockSize = 2 * 1024;
    ByteVector m_block;
};

Frame mp3Frame(const unsigned char* h)
{
    static const int kbps[2][3][16] = {
        {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448, 0},
         {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384, 0},
         {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0}},
        {{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256, 0},
         {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0},
         {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}}};
    static const int rates[3] = {44100, 48000, 32000};
    Frame frame;
    const int version = (h[1] >> 3) & 3; // 0: 2.5, 2: 2, 3: 1
    const int layer = 4 - ((h[1] >> 1) & 3);
    const int rateIndex = (h[2] >> 2) & 3;
    if (h[0] != 0xFF || (h[1] & 0xE0) != 0xE0 || version == 1 || layer == 4 || rateIndex == 3)
        return frame;
    const int bitRate = kbps[version == 3 ? 0 : 1][layer - 1][h[2] >> 4] * 1000;
    if (bitRate == 0)
        return frame;
    frame.sampleRate = rates[rateIndex] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
    frame.samples = layer == 1 ? 384 : layer == 3 && version != 3 ? 576 : 1152;
    const int padding = (h[2] >> 1) & 1;
    frame.size = layer == 1 ? (12 * bitRate / frame.sampleRate + padding) * 4
                            : frame.samples / 8 * bitRate / frame.sampleRate + padding;
    const bool mono = (h[3] >> 6) == 3;
    frame.sideInfo = version == 3 ? (mono ? 17 : 32) : (mono ? 9 : 17);
    frame.identity = unsigned(h[1] & 0xFE) << 8 | unsigned(h[2] & 0x0C);
    return frame;
}

Frame adtsFrame(const unsigned char* h)
{
    static const int rates[16] = {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050,
                                  16000, 12000, 11025, 8000,  7350,  0,     0,     0};
    Frame frame;
    // Other readers take the two bits of the layer, which is none, and the version as they come.
    if (h[0] != 0xFF || (h[1] & 0xF0) != 0xF0 || rates[(h[2] >> 2) & 15] == 0)
        return frame;
    const int size = (h[3] & 3) << 11 | h[4] << 3 | h[5] >> 5;
    if (size < 7)
        return frame;
    frame.size = size;
    frame.sampleRate = rates[(h[2] >> 2) & 15];
    frame.samples = 1024 * ((h[6] & 3) + 1);
    frame.identity = unsigned(h[1] & 0x06) << 8 | unsigned(h[2] & 0x3C);
    return frame;
}

struct StreamKind
{
    Frame (*parse)(const unsigned char*);
    int headerSize;
};

constexpr StreamKind mp3{mp3Frame, 4};
constexpr StreamKind adts{adtsFrame, 7};

Frame frameAt(Window& window, const StreamKind& kind, long position)
{
    const unsigned char* header = window.at(position, kind.headerSize);
    return header ? kind.parse(header) : Frame();
}

/// Whether so many frames of one stream follow one another from there on; of two the second one may be
/// missing where the stream ends.
bool startsStream(Window& window, const StreamKind& kind, long position, int frames)
{
    const Frame first = frameAt(window, kind, position);
    Frame frame = first;
    for (int found = 1; found < frames; ++found) {
        if (frame.size == 0 || frame.identity != first.identity)
            return false;
        position += frame.size;
        if (position == window.end() && frames == framesNearby)
            return true;
        frame = frameAt(window, kind, position);
    }
    return frame.size > 0 && frame.identity == first.identity;
}

/// Where the first frame starts that others of the same stream, or the stream's end, follow; -1 when there is
/// none.
long firstFrame(Window& window, const StreamKind& kind, long begin, long searchLength)
{
    const long last = std::min(window.end(), begin + searchLength);
    for (long position = begin; (position = window.findSync(position, last)) < last; ++position)
        if (startsStream(window, kind, position, position - begin < nearby ? framesNearby : framesFarOff))
            return position;
    return -1;
}

std::int64_t bigEndian(const unsigned char* bytes, int count)
{
    std::int64_t number = 0;
    for (int i = 0; i < count; ++i)
        number = number << 8 | bytes[i];
    return number;
}

MpegStream fromSamples(std::int64_t samples, int sampleRate, std::int64_t bytes)
{
    MpegStream result;
    result.sampleRate = sampleRate;
    result.milliseconds = base::checked::scaled(samples, 1000, sampleRate);
    result.bitsPerSecond = base::checked::scaled(bytes, 8000, result.milliseconds);
    return result;
}

/// The samples that an encoder added before and behind the music, from the header's extension.
int addedSamples(const unsigned char* xing, int tagFlags)
{
    const unsigned char* extension = xing + 8 + (tagFlags & 1 ? 4 : 0) + (tagFlags & 2 ? 4 : 0) +
                                     (tagFlags & 4 ? 100 : 0) + (tagFlags & 8 ? 4 : 0);
    if (std::memcmp(extension, "LAME", 4) != 0 && std::memcmp(extension, "Lavf", 4) != 0 &&
        std::memcmp(extension, "Lavc", 4) != 0)
        return 0;
    return (extension[21] << 4 | extension[22] >> 4) + ((extension[22] & 15) << 8 | extension[23]);
}

/// By the header in the first frame; false when there is none or it counts no frames.
bool byHeader(Window& window, long position, const Frame& frame, MpegStream& result)
{
    constexpr int xingRoom = 8 + 4 + 4 + 100 + 4 + 24;
    const std::int64_t rest = window.end() - position;
    if (const unsigned char* xing = window.at(position + 4 + frame.sideInfo, xingRoom);
        xing && (std::memcmp(xing, "Xing", 4) == 0 || std::memcmp(xing, "Info", 4) == 0)) {
        const int flags = xing[7];
        const std::int64_t frames = flags & 1 ? bigEndian(xing + 8, 4) : 0;
        // A count that the bytes left cannot hold is not believed.
        if (frames <= 0 || frames * 24 > rest)
            return false;
        const std::int64_t samples = frames * frame.samples - addedSamples(xing, flags);
        result = fromSamples(std::max<std::int64_t>(samples, 0), frame.sampleRate, rest - frame.size);
        return true;
    }
    if (const unsigned char* vbri = window.at(position + 4 + 32, 26);
        vbri && std::memcmp(vbri, "VBRI", 4) == 0) {
        const std::int64_t frames = bigEndian(vbri + 14, 4);
        if (frames <= 0 || frames * 24 > rest)
            return false;
        result = fromSamples(frames * frame.samples, frame.sampleRate, rest - frame.size);
        return true;
    }
    return false;
}

MpegStream byWalking(Window& window, const StreamKind& kind, long position)
{
    const Frame first = frameAt(window, kind, position);
    const long begin = position;
    std::int64_t samples = 0;
    std::int64_t bytes = 0;
    while (position < window.end()) {
        const Frame frame = frameAt(window, kind, position);
        if (frame.size == 0 || frame.identity != first.identity) {
            // Damaged in the middle, or the tag at the end.
            position = firstFrame(window, kind, position + 1, searchLimit);
            if (position < 0)
                break;
            continue;
        }
        samples += frame.samples;
        bytes += frame.size;
        position += frame.size;
        if (position - begin > walkLimit) {
            // The rest goes on as it was so far.
            const double share = double(window.end() - begin) / double(position - begin);
            samples = std::int64_t(double(samples) * share);
            bytes = std::int64_t(double(bytes) * share);
            break;
        }
    }
    return fromSamples(samples, first.sampleRate, bytes);
}
} // namespace

MpegStream audiocore::measureMp3(TagLib::IOStream& stream, long begin)
{
    Window window(stream);
    const long position = firstFrame(window, mp3, begin, searchLimit);
    if (position < 0)
        return MpegStream();
    MpegStream result;
    if (byHeader(window, position, frameAt(window, mp3, position), result))
        return result;
    return byWalking(window, mp3, position);
}

MpegStream audiocore::measureAdts(TagLib::IOStream& stream, long begin)
{
    Window window(stream);
    const long position = firstFrame(window, adts, begin, searchLimit);
    return position < 0 ? MpegStream() : byWalking(window, adts, position);
}

bool audiocore::findsMp3(TagLib::IOStream& stream, long begin, long searchLength)
{
    Window window(stream);
    return firstFrame(window, mp3, begin, searchLength) >= 0;
}

bool audiocore::findsAdts(TagLib::IOStream& stream, long begin, long searchLength)
{
    Window window(stream);
    return firstFrame(window, adts, begin, searchLength) >= 0;
}
