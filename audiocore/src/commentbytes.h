#pragma once

#include "tagfields.h"

#include <optional>
#include <vector>

namespace audiocore {
/// The comment of a FLAC or Ogg file, "NAME=value" by "NAME=value". What is not edited keeps its bytes.
class CommentBytes
{
public:
    /// A new comment where there are no bytes; nothing where they cannot be taken apart.
    static std::optional<CommentBytes> parse(const TagLib::ByteVector& comment);

    bool isEmpty() const { return m_fields.empty(); }
    void apply(const TagEdits& edits);
    /// All values of the item, joined; also those that are no UTF-8.
    std::string text(int type) const;
    TagLib::ByteVector render() const;

private:
    TagLib::ByteVector m_vendor;
    std::vector<TagLib::ByteVector> m_fields;
    TagLib::ByteVector m_rest; ///< what a container has behind the comment
};
} // namespace audiocore
