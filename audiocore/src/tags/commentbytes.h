#pragma once

#include "tags/tagfields.h"

#include <optional>
#include <vector>

namespace audiocore {
/// The comment of a FLAC or Ogg file, "NAME=value" by "NAME=value". What is not edited keeps its bytes.
/// TagLib's writer would not keep them: see tagwriting.h.
class CommentBytes
{
public:
    /// A new comment where there are no bytes; nothing where they cannot be taken apart.
    static std::optional<CommentBytes> parse(const TagLib::ByteVector& comment);

    /// What makes a comment tell no more fields than there are, and of those the first ones that are in
    /// bounds.
    struct Bound
    {
        unsigned int place; ///< of the bytes that are to be others
        TagLib::ByteVector bytes;
        unsigned int end; ///< of the fields that are told then

        /// The comment has at least the bytes before `end`.
        void applyTo(TagLib::ByteVector& comment) const;
    };
    /// Nothing for a comment that is in bounds and tells no more than there is.
    static std::optional<Bound> boundOf(const TagLib::ByteVector& comment);
    static void boundFields(TagLib::ByteVector& comment);

    bool isEmpty() const { return m_fields.empty(); }
    void apply(const TagEdits& edits);
    /// All values of the item, joined, of titles the first one; also those that are no UTF-8.
    std::string text(int type) const;
    TagLib::ByteVector render() const;

private:
    TagLib::ByteVector m_vendor;
    std::vector<TagLib::ByteVector> m_fields;
    TagLib::ByteVector m_rest; ///< what a container has behind the comment
};
} // namespace audiocore
