#pragma once

#include "tags/tagplaces.h"

#include <vector>

namespace audiocore {
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
} // namespace audiocore
