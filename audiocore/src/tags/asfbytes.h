#pragma once

#include "tags/asfobjects.h"
#include "tags/tagfields.h"

namespace audiocore {
/// The header of an ASF file. What is not edited keeps its bytes, objects that we do not know and padding
/// included. TagLib's writer would not keep them: see tagwriting.h.
class AsfBytes
{
public:
    /// Nothing where the bytes cannot be taken apart, or into too many parts.
    static std::optional<AsfBytes> parse(const TagLib::ByteVector& header);

    /// A new value takes the place of all that its field has now, whatever stream or language they are of:
    /// the tag library shows them together. Of title and author it shows one alone; in other languages they
    /// stay.
    void apply(const TagEdits& edits);
    /// The header of a file in which so many bytes follow it; nothing when that would be too large.
    std::optional<TagLib::ByteVector> render(std::int64_t behind) const
    {
        return asf::render(m_header, behind);
    }

private:
    std::vector<asf::Object*> objectsOfFields();
    asf::Object& homeOf(int type, bool large);
    void setDescription(int type, const TagLib::ByteVector& text);
    void setField(int type, const std::optional<asf::Value>& value);
    std::string trackNow();

    asf::Header m_header;
};
} // namespace audiocore
