#include "tags/asfwriting.h"

#include "media/checkedstream.h"
#include "tags/asfbytes.h"
#include "tags/tagplaces.h"

#include <taglib/asffile.h>

using TagLib::ByteVector;

namespace {
/// The header, which says its own size.
audiocore::Place headerOf(audiocore::CheckedStream& stream)
{
    constexpr long sizePlace = 16;
    stream.seek(sizePlace);
    return {0, long(stream.readBlock(8).toLongLong(false))};
}
} // namespace

bool audiocore::writeAsf(TagLib::ASF::File& file, CheckedStream& stream, const TagEdits& edits)
{
    const Place place = headerOf(stream);
    const std::optional<ByteVector> old = bytesAt(file, place);
    std::optional<AsfBytes> header = old ? AsfBytes::parse(*old) : std::nullopt;
    if (!header)
        return false;
    header->apply(edits);
    const std::optional<ByteVector> bytes = header->render(stream.length() - place.size);
    if (!bytes)
        return false;
    putAt(file, place, *bytes);
    return true;
}
