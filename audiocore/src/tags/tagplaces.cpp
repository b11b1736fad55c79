#include "tags/tagplaces.h"

#include "tags/apebytes.h"
#include "tags/id3v2frames.h"
#include "tags/taglimits.h"

#include <taglib/tfile.h>

#include <algorithm>

using audiocore::Place;
using TagLib::ByteVector;

namespace {
constexpr long id3v1Size = 128;
} // namespace

ByteVector audiocore::readAt(TagLib::File& file, long begin, unsigned long size)
{
    file.seek(begin);
    return file.readBlock(size);
}

Place audiocore::findId3v2(TagLib::File& file, long begin)
{
    const ByteVector header = readAt(file, begin, id3v2::headerSize);
    const std::optional<id3v2::TagSize> size = id3v2::sizeOfTag(id3v2::viewOf(header));
    return size ? Place{begin, std::min(long(size->whole()), long(file.length()) - begin)} : Place();
}

Place audiocore::findId3v1(TagLib::File& file)
{
    const long begin = std::max(0L, long(file.length()) - id3v1Size);
    const ByteVector tag = readAt(file, begin, id3v1Size);
    if (long(tag.size()) == id3v1Size && tag.startsWith("TAG"))
        return {begin, id3v1Size};
    return {long(file.length()), 0};
}

Place audiocore::findApe(TagLib::File& file)
{
    const long end = findId3v1(file).begin;
    const long footer = end - long(ApeBytes::footerSize);
    if (footer < 0)
        return {end, 0};
    const long size = long(ApeBytes::sizeByFooter(readAt(file, footer, ApeBytes::footerSize)));
    return size <= end ? Place{end - size, size} : Place{end, 0};
}

std::optional<ByteVector> audiocore::bytesAt(TagLib::File& file, const Place& place)
{
    if (place.size > mostTagBytesWritten)
        return std::nullopt;
    return place.size > 0 ? readAt(file, place.begin, static_cast<unsigned long>(place.size)) : ByteVector();
}

void audiocore::putAt(TagLib::File& file, const Place& place, const ByteVector& bytes)
{
    if (place.size > 0 || !bytes.isEmpty())
        file.insert(bytes, static_cast<unsigned long>(place.begin), static_cast<unsigned long>(place.size));
}
