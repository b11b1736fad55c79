#include "tags/soundview.h"

#include "base/checkedmath.h"
#include "base/filebytes.h"
#include "base/platform.h"
#include "media/checkedstream.h"
#include "media/formats.h"
#include "media/oggpacket.h"
#include "tags/commentbytes.h"
#include "tags/id3v2frames.h"
#include "tags/taglimits.h"

#include <algorithm>

using audiocore::CheckedStream;
using audiocore::SoundView;
using TagLib::ByteVector;

namespace {
ByteVector bytesAt(CheckedStream& stream, long position, unsigned long count)
{
    stream.seek(position);
    return stream.readBlock(count);
}

long behind(long position, std::int64_t bytes)
{
    return long(base::checked::sum(position, bytes));
}
} // namespace

std::optional<SoundView> SoundView::of(std::FILE* file, const std::string& path)
{
    try {
        base::SystemFile bytes(file);
        CheckedStream stream(bytes, path, CheckedStream::Mode::Read);
        SoundView view;
        if (stream.isOpen() && view.hideAll(stream) && !stream.ranDry())
            return view;
    } catch (const EndlessReading&) {
        return std::nullopt; // as good as unreadable
    }
    return std::nullopt;
}

std::size_t SoundView::readAt(std::FILE* file, std::int64_t position, void* bytes, std::size_t count) const
{
    if (position >= m_end)
        return 0;
    const auto most = std::size_t(std::min<std::uint64_t>(count, std::uint64_t(m_end - position)));
    const std::size_t got = base::readAt(file, position, bytes, most);
    const std::int64_t end = position + std::int64_t(got);
    for (auto byte = m_bytes.lower_bound(position); byte != m_bytes.end() && byte->first < end; ++byte)
        static_cast<char*>(bytes)[byte->first - position] = byte->second;
    return got;
}

void SoundView::set(std::int64_t place, const char* bytes, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        m_bytes[place + std::int64_t(i)] = bytes[i];
}

bool SoundView::hideAll(CheckedStream& stream)
{
    const long begin = hideId3v2(stream);
    hideApe(stream);
    const ByteVector head = bytesAt(stream, begin, longestMagic);
    if (head.startsWith("RIFF")) { // whatever its chunks are said to be
        hideChunks(stream, begin + 12);
        return true;
    }
    const AudioFormat format = formatByMagic(id3v2::viewOf(head));
    if (format == AUDIO_FORMAT_FLAC)
        hideFlacBlocks(stream, begin + 4);
    else if (format == AUDIO_FORMAT_WMA)
        hideAsfObjects(stream, begin + 30);
    return format != AUDIO_FORMAT_OGG || isOggInBounds(stream, begin);
}

/// A tag of a version that nobody knows is passed over. Where the music begins.
long SoundView::hideId3v2(CheckedStream& stream)
{
    constexpr int version = 3;
    const char unknown = 9;
    long position = 0;
    for (;;) {
        const ByteVector header = bytesAt(stream, position, id3v2::headerSize);
        const std::optional<id3v2::TagSize> size = id3v2::sizeOfTag(id3v2::viewOf(header));
        if (!size)
            return position;
        set(position + version, &unknown, 1);
        position += long(size->whole());
    }
}

void SoundView::hideApe(CheckedStream& stream)
{
    constexpr long footerSize = 32;
    constexpr long id3v1Size = 128;
    for (const long footer : {stream.length() - footerSize, stream.length() - id3v1Size - footerSize})
        if (footer >= 0 && bytesAt(stream, footer, 8) == "APETAGEX")
            set(footer, "-", 1);
}

/// All blocks but the one that describes the stream look like padding.
void SoundView::hideFlacBlocks(CheckedStream& stream, long position)
{
    constexpr int lastBlock = 0x80;
    constexpr int padding = 1;
    for (bool last = false; !last;) {
        const ByteVector head = bytesAt(stream, position, 4);
        if (head.size() < 4)
            return;
        last = (head.data()[0] & lastBlock) != 0;
        const char shown = char(padding | (last ? lastBlock : 0));
        if ((head.data()[0] & ~lastBlock) != 0)
            set(position, &shown, 1);
        position += 4 + long(head.toUInt(1, 3, true));
    }
}

/// Where the sound is behind and no chunk follows, the file ends. Sound of no size goes on to the end.
void SoundView::hideChunks(CheckedStream& stream, long position)
{
    bool soundIsBehind = false;
    for (;;) {
        const ByteVector head = bytesAt(stream, position, 8);
        const auto printable = [](char c) { return c >= ' ' && c <= '~'; };
        if (head.size() < 8)
            return;
        if (!std::all_of(head.begin(), head.begin() + 4, printable)) {
            if (soundIsBehind)
                m_end = position;
            return;
        }
        const ByteVector name = head.mid(0, 4);
        if (name == "LIST" || name == "ID3 " || name == "id3 ")
            set(position, "JUNK", 4);
        const unsigned int size = head.toUInt(4, false);
        soundIsBehind |= name == "data" && size > 0;
        position = behind(position, 8 + std::int64_t(size) + (size & 1));
    }
}

/// The objects of fields become unknown ones; those inside the header's extension are looked at, too.
void SoundView::hideAsfObjects(CheckedStream& stream, long position)
{
    static const ByteVector fields[] = {
        {"\x40\xA4\xD0\xD2\x07\xE3\xD2\x11\x97\xF0\x00\xA0\xC9\x5E\xA8\x50", 16},
        {"\xEA\xCB\xF8\xC5\xAF\x5B\x77\x48\x84\x67\xAA\x8C\x44\xFA\x4C\xCA", 16},
        {"\x94\x1C\x23\x44\x98\x94\xD1\x49\xA1\x41\x1D\x13\x4E\x45\x70\x54", 16}};
    static const ByteVector extension("\xB5\x03\xBF\x5F\x2E\xA9\xCF\x11\x8E\xE3\x00\xC0\x0C\x20\x53\x65", 16);
    static const ByteVector data("\x36\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C", 16);
    constexpr long headSize = 24;
    constexpr long extensionHead = headSize + 22;
    for (;;) {
        const ByteVector head = bytesAt(stream, position, headSize);
        const ByteVector kind = head.mid(0, 16);
        const std::int64_t size = long(head.size()) < headSize ? 0 : head.toLongLong(16, false);
        if (kind == data || size < headSize)
            return;
        if (std::find(std::begin(fields), std::end(fields), kind) != std::end(fields))
            set(position, "----", 4);
        position = kind == extension ? position + extensionHead : behind(position, size);
    }
}

/// Pages have checksums, so nothing can be shown otherwise: whether decoders may see the comments as they
/// are.
bool SoundView::isOggInBounds(CheckedStream& stream, long begin)
{
    const std::vector<OggComment> comments = oggComments(stream, begin, mostTagBytes);
    return std::none_of(comments.begin(), comments.end(), [](const OggComment& comment) {
        // Where the first length makes no sense, they see no fields either.
        return comment.bytes.size() > 8 && comment.bytes.toUInt(0u, false) < comment.bytes.size() &&
               CommentBytes::boundOf(comment.bytes);
    });
}
