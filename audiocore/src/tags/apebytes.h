#pragma once

#include "tags/tagfields.h"

#include <optional>
#include <vector>

namespace audiocore {
/// An APE tag, item by item. Items that are not edited keep their bytes.
/// TagLib's writer would not keep them: see tagwriting.h.
class ApeBytes
{
public:
    /// A new tag where there are no bytes; nothing where they cannot be taken apart.
    static std::optional<ApeBytes> parse(const TagLib::ByteVector& tag);
    /// The size of the tag that ends with this footer, header included; 0 when it is none.
    static unsigned int sizeByFooter(const TagLib::ByteVector& footer);
    static constexpr unsigned int footerSize = 32;
    /// Of a tag's items those that say ours, in bounds, as the items of another tag.
    static TagLib::ByteVector shown(const TagLib::ByteVector& items);

    bool isEmpty() const { return m_items.empty(); }
    void apply(const TagEdits& edits);
    /// All values of the item, joined, of titles the first one; also those that are no UTF-8.
    std::string text(int type) const;
    /// No bytes without items.
    TagLib::ByteVector render() const;

private:
    struct Item
    {
        unsigned int flags;
        std::string key;
        TagLib::ByteVector value;
    };

    static void append(TagLib::ByteVector& items, const Item& item);
    bool readItems(const TagLib::ByteVector& bytes);

    std::vector<Item> m_items;
};
} // namespace audiocore
