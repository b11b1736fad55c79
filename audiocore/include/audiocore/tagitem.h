#pragma once

#include <cstdint>

/// What one tag item holds. The values are part of the contract; 6, 7 and 8 exist in the numbering and are
/// neither read nor written.
enum TagItemType : std::int32_t {
    TAG_TITLE = 0,
    TAG_ARTIST = 1,
    TAG_ALBUM = 2,
    TAG_GENRE = 3,
    TAG_YEAR = 4,  ///< decimal text
    TAG_TRACK = 5, ///< decimal text
    TAG_PICTURE = 9
};

/// One item of a tag, exchanged by value.
struct TagItem
{
    /// -1 when the application adds an item; without meaning in items that are read.
    std::int32_t id;
    /// A TagItemType.
    std::int32_t type;
    /// 0: `data` is a zero-terminated UTF-32 text. Any other value: `data` is raw bytes, a picture.
    std::int32_t dataKind;
    /// Bytes at `data`, the terminator of a text not counted. 0: the item is absent.
    std::int32_t size;
    /// Items from GetItem stay owned by the tag object and are valid until its next call, or the next GetItem
    /// of any tag object on the same thread; items handed to SetItem stay owned by the caller.
    void* data;
};
