#pragma once

#include "mediafile.h"

#include <taglib/tbytevector.h>

#include <array>
#include <optional>
#include <string>

namespace audiocore {
constexpr int textTypes = 6;

/// What a file's tags say, as the items show it: UTF-8, empty for an absent field.
struct TagContent
{
    std::array<std::string, textTypes> texts; ///< by TagItemType
    TagLib::ByteVector picture;               ///< the front cover, else the first picture
};

/// Edits, by TagItemType: nothing where a field is left alone, an empty value where it is taken out.
struct TagEdits
{
    std::array<std::optional<std::string>, textTypes> texts;
    std::optional<TagLib::ByteVector> picture;

    bool isEmpty() const;
};

TagContent readTags(const MediaFile& media);
/// Keeps only those edits that change what the content shows.
TagEdits changesOf(const TagEdits& edits, const TagContent& content);
/// Applies the edits to the file's tags in memory and saves; false when the library refuses.
bool writeTags(const MediaFile& media, const TagEdits& edits);
} // namespace audiocore
