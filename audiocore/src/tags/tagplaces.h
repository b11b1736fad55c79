#pragma once

#include <taglib/tbytevector.h>

#include <optional>
#include <vector>

namespace TagLib {
class File;
namespace Ogg {
class File;
}
} // namespace TagLib

namespace audiocore {
struct MediaFile;

/// A part of a file; where there is no tag, the place where one would go and no bytes.
struct Place
{
    long begin = 0;
    long size = 0;
};

Place findId3v2(TagLib::File& file);
Place findApe(TagLib::File& file);
Place findId3v1(TagLib::File& file);
/// Nothing when that is more than we write of one tag.
std::optional<TagLib::ByteVector> bytesAt(TagLib::File& file, const Place& place);
void putAt(TagLib::File& file, const Place& place, const TagLib::ByteVector& bytes);

/// The bytes of the tag as it stands in the file, wherever a file of its kind has it; none without one, and
/// nothing when that is more than we write of one tag.
std::optional<TagLib::ByteVector> id3v2Bytes(TagLib::File& file);
/// Of a comment, in bounds for reading.
TagLib::ByteVector commentBytes(const MediaFile& media);

/// The blocks before the music of a FLAC file.
class FlacBlocks
{
public:
    /// Nothing where they cannot be taken apart or are more than we write.
    static std::optional<FlacBlocks> read(TagLib::File& file, long begin);
    /// The comment's bytes without all the others.
    static TagLib::ByteVector commentOnly(TagLib::File& file, long begin);

    /// The comment's bytes; none without a comment.
    TagLib::ByteVector comment() const;
    void setComment(const TagLib::ByteVector& bytes);
    /// Takes all pictures out and puts this one in, unless it is empty.
    void setPicture(const TagLib::ByteVector& bytes);
    /// False when a block is too large.
    bool write(TagLib::File& file) const;

private:
    struct Block
    {
        int type;
        TagLib::ByteVector bytes;
    };

    Place m_place;
    std::vector<Block> m_blocks; ///< without padding
};

/// The packet of an Ogg stream that carries the comment.
struct CommentPacket
{
    unsigned int index = 1;
    TagLib::ByteVector head;
    TagLib::ByteVector comment;
    bool isFlacBlock = false;

    static std::optional<CommentPacket> find(TagLib::Ogg::File& file);
    /// False when the comment is too large or the tag library refuses.
    bool write(TagLib::Ogg::File& file);
};
} // namespace audiocore
