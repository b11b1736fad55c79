#pragma once

#include "tags/mediafile.h"

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
    int pictures = 0;                         ///< of whatever kind and size
};

/// Edits, by TagItemType: nothing where a field is left alone, an empty value where it is taken out.
struct TagEdits
{
    std::array<std::optional<std::string>, textTypes> texts;
    std::optional<TagLib::ByteVector> picture;

    bool isEmpty() const;
};

/// Of a file that holds music.
TagContent readTags(const MediaFile& media);
/// A year of four digits, a track without its total, any other text as it is.
std::string shownText(int type, const std::string& text);
/// Keeps only those edits that change what the content shows. A picture is to be the only one.
TagEdits changesOf(const TagEdits& edits, const TagContent& content);
} // namespace audiocore
