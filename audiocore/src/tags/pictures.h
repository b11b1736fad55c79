#pragma once

#include "tags/tagfields.h"

namespace TagLib {
namespace ASF {
class Tag;
}
} // namespace TagLib

namespace audiocore {
/// The most bytes that a picture may have to be written into this file: its tag can hold it, and our own
/// player still plays the file.
unsigned int largestPicture(const MediaFile& media);
/// Fills in the front cover, else the first picture, and how many there are.
void readPictures(const MediaFile& media, TagContent& content);

/// "image/png" and the like, by the first bytes.
std::string pictureType(const TagLib::ByteVector& bytes);
/// The front cover as FLAC wraps it.
TagLib::ByteVector flacPicture(const TagLib::ByteVector& bytes);
/// Takes all pictures out and puts the bytes in as the front cover, unless they are empty.
void setAsfPicture(TagLib::ASF::Tag& tag, const TagLib::ByteVector& bytes);
} // namespace audiocore
