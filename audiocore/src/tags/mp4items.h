#pragma once

#include "tags/mp4lists.h"
#include "tags/tagfields.h"

#include <taglib/tbytevector.h>

#include <optional>
#include <string>

/// Lists of an MP4 file with edits applied, as bytes.
namespace audiocore {
class Mp4File;

TagLib::ByteVector mp4AtomBytes(const std::string& name, const TagLib::ByteVector& content);
/// Of the edits those of fields that the list has.
TagEdits editsWithin(const Mp4List& list, const TagEdits& edits);
/// The list as an atom: items that are not edited keep their bytes, but for those that say nothing and keep
/// others from reading the list. Nothing where it is too large, or where there is something behind its items.
std::optional<TagLib::ByteVector> editedList(Mp4File& file, const Mp4List& list, const TagEdits& edits);
/// The atom of plain text with the edit; empty where there is to be none.
TagLib::ByteVector editedText(Mp4File& file, const Mp4Item& item, const std::string& text);
} // namespace audiocore
