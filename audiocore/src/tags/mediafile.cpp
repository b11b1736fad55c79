#include "tags/mediafile.h"

#include "media/checkedstream.h"
#include "media/formats.h"
#include "tags/id3v2frames.h"
#include "tags/lastway.h"

#include <optional>
#include <utility>

namespace id3v2 = audiocore::id3v2;

using audiocore::MediaFile;
using TagLib::ByteVector;

long audiocore::behindId3v2(CheckedStream& stream)
{
    constexpr int mostTags = 8;
    long position = 0;
    for (int tags = 0; tags < mostTags; ++tags) {
        const ByteVector header = stream.readAt(position, id3v2::headerSize);
        const std::optional<id3v2::TagSize> size = id3v2::sizeOfTag(id3v2::viewOf(header));
        if (!size)
            break;
        position += long(size->whole());
    }
    return position;
}
MediaFile audiocore::openMedia(CheckedStream& stream)
{
    MediaFile media;
    media.audioBegin = behindId3v2(stream);
    const ByteVector head = stream.readAt(media.audioBegin, longestMagic);
    const FormatRow* row = rowByMagic(id3v2::viewOf(head));
    if (!row)
        row = rowByFrames(stream, media.audioBegin);
    if (!row)
        return MediaFile();
    media.format = row->format;
    media.demuxer = row->demuxer;
    if (row->tags)
        media.file = row->tags->open(stream, media.audioBegin);
    if (!media.file || !media.file->isMusic())
        media.file = openLastWay(stream, *row);
    return media.file ? std::move(media) : MediaFile();
}
