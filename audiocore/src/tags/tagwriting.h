#pragma once

#include "tags/tagfields.h"
#include "tags/tagplaces.h"

#include <string>

/// Tags are written by bytes of our own: id3v2bytes, apebytes, commentbytes, infobytes, mp4writing and
/// asfbytes. TagLib's writers were tried for it: they drop frames, atoms and encodings that no edit touched,
/// and put fields into another order.
namespace audiocore {
/// Applies the edits to the file's tags, which say `content` now, and saves them. The file's tag objects are
/// of no use afterwards. Why it did not work, empty on success; the file may be half written then.
std::string writeTags(const MediaFile& media, const TagEdits& edits, const TagContent& content);

// For the formats, to put their files together.

constexpr const char* cannotBeKept = "its tags hold something that could not be kept";
constexpr const char* tooLarge = "its tags would be too large";
constexpr const char* cannotBeWritten = "the tag cannot be written";

/// The edits for a format's own tag, and for the further tags that a file of it may have.
struct FileEdits
{
    TagEdits own;
    TagEdits ownNew; ///< where there is no own tag yet: it takes over what the others say
    TagEdits further;
};

enum class TagRank {
    Own,
    Further ///< edited where there is one, and never made
};

template <class Bytes>
void applyTo(Bytes& tag, const FileEdits& edits, TagRank rank)
{
    if (rank == TagRank::Own)
        tag.apply(tag.isEmpty() ? edits.ownNew : edits.own);
    else if (!tag.isEmpty())
        tag.apply(edits.further);
}

// Each edits one tag of the file. Why it did not work, empty on success.

/// The ID3v2 tag at the file's beginning, which is at that place.
std::string writeFront(TagLib::File& file, const Place& place, const FileEdits& edits, TagRank rank);
/// The APE tag near the file's end.
std::string writeApe(TagLib::File& file, const FileEdits& edits, TagRank rank);
/// The tag of fixed length at the very end, where there is one.
void writeId3v1(TagLib::File& file, const FileEdits& edits);
} // namespace audiocore
