#pragma once

#include "tags/tagfields.h"

#include <vector>

namespace audiocore {
/// The INFO list of a WAV file. What is not edited keeps its bytes.
/// TagLib's writer would not keep them: see tagwriting.h.
class InfoBytes
{
public:
    /// `list` starts with "INFO".
    explicit InfoBytes(const TagLib::ByteVector& list);

    void apply(const TagEdits& edits);
    TagLib::ByteVector render() const;
    /// The entries of a list that say our items, in bounds, as another list.
    static TagLib::ByteVector shown(const TagLib::ByteVector& list);

private:
    struct Entry
    {
        TagLib::ByteVector id;
        TagLib::ByteVector value;
    };

    static void append(TagLib::ByteVector& list, const Entry& entry);

    std::vector<Entry> m_entries;
    TagLib::ByteVector m_rest; ///< behind the last entry that can be made out
};
} // namespace audiocore
