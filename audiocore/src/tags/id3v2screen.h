#pragma once

#include <taglib/tbytevector.h>

#include <functional>

namespace audiocore {
/// Changes the body of the tag with this header, or what of it is there, into the frames that say our items,
/// plain and in bounds, for a header of the same version without any flags. Nothing is copied where nothing
/// is to be left out.
void screenId3v2(const TagLib::ByteVector& header, TagLib::ByteVector& body);

/// Bytes of a tag's body by position and size.
using TagBodyReader = std::function<TagLib::ByteVector(unsigned int, unsigned int)>;
/// Of a tag that is too large only the frames that say our items, `most` bytes of them at the most; none of a
/// body that has zeros put in between.
TagLib::ByteVector skimId3v2(const TagLib::ByteVector& header, unsigned int bodySize, long most,
                             const TagBodyReader& body);
} // namespace audiocore
