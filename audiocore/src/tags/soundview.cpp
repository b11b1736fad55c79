#include "tags/soundview.h"

#include "base/filebytes.h"
#include "base/platform.h"
#include "media/checkedstream.h"
#include "media/formats.h"
#include "tags/id3v2frames.h"
#include "tags/tagkind.h"

#include <algorithm>

using audiocore::CheckedStream;
using audiocore::SoundView;
using TagLib::ByteVector;

std::optional<SoundView> SoundView::of(std::FILE* file, const std::string& path)
{
    try {
        base::SystemFile bytes(file);
        CheckedStream stream(bytes, path, CheckedStream::Mode::Read);
        return of(stream);
    } catch (const EndlessReading&) {
        return std::nullopt; // as good as unreadable
    }
}

std::optional<SoundView> SoundView::of(CheckedStream& stream)
{
    SoundView view;
    if (stream.isOpen() && view.hideAll(stream) && !stream.ranDry())
        return view;
    return std::nullopt;
}

std::size_t SoundView::readAt(std::FILE* file, std::int64_t position, void* bytes, std::size_t count) const
{
    if (position >= m_end)
        return 0;
    const auto most = std::size_t(std::min<std::uint64_t>(count, std::uint64_t(m_end - position)));
    const std::size_t got = base::readAt(file, position, bytes, most);
    showIn(bytes, position, got);
    return got;
}

void SoundView::showIn(void* bytes, std::int64_t position, std::size_t count) const
{
    const std::int64_t end = position + std::int64_t(count);
    for (auto byte = m_bytes.lower_bound(position); byte != m_bytes.end() && byte->first < end; ++byte)
        static_cast<char*>(bytes)[byte->first - position] = byte->second;
}

void SoundView::show(std::int64_t place, std::string_view bytes)
{
    for (const char byte : bytes)
        m_bytes[place++] = byte;
}

bool SoundView::hideAll(CheckedStream& stream)
{
    const long begin = hideId3v2(stream);
    hideApe(stream);
    const ByteVector head = stream.readAt(begin, longestMagic);
    const FormatRow* row = rowByMagic(id3v2::viewOf(head));
    return !row || !row->tags || !row->tags->hide || row->tags->hide(stream, begin, *this);
}

/// A tag of a version that nobody knows is passed over. Where the music begins.
long SoundView::hideId3v2(CheckedStream& stream)
{
    constexpr int version = 3;
    constexpr std::string_view unknown = "\x09";
    long position = 0;
    for (;;) {
        const ByteVector header = stream.readAt(position, id3v2::headerSize);
        const std::optional<id3v2::TagSize> size = id3v2::sizeOfTag(id3v2::viewOf(header));
        if (!size)
            return position;
        show(position + version, unknown);
        position += long(size->whole());
    }
}

void SoundView::hideApe(CheckedStream& stream)
{
    constexpr long footerSize = 32;
    constexpr long id3v1Size = 128;
    for (const long footer : {stream.length() - footerSize, stream.length() - id3v1Size - footerSize})
        if (footer >= 0 && stream.readAt(footer, 8) == "APETAGEX")
            show(footer, "-");
}
