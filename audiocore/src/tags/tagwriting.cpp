#include "tags/tagwriting.h"

#include "audiocore/tagitem.h"
#include "tags/apebytes.h"
#include "tags/id3v2bytes.h"

#include <taglib/id3v1genres.h>
#include <taglib/tfile.h>

#include <algorithm>
#include <optional>

using audiocore::FileEdits;
using audiocore::TagContent;
using audiocore::TagEdits;
using TagLib::ByteVector;
using TagLib::String;

namespace {
FileEdits editsFor(const TagEdits& edits, const TagContent& content)
{
    FileEdits all{edits, edits, edits};
    for (size_t type = 0; type < size_t(audiocore::textTypes); ++type)
        if (!edits.texts[type] && !content.texts[type].empty())
            all.ownNew.texts[type] = content.texts[type];
    // One picture is enough.
    if (edits.picture)
        all.further.picture = ByteVector();
    return all;
}

void writeOver(ByteVector& tag, unsigned int begin, unsigned int size, const std::string& text)
{
    const String value(text, String::UTF8);
    ByteVector bytes = value.isLatin1() ? value.data(String::Latin1) : ByteVector();
    bytes.resize(size, '\0');
    std::copy(bytes.begin(), bytes.end(), tag.data() + begin);
}
} // namespace

std::string audiocore::writeTags(const MediaFile& media, const TagEdits& edits, const TagContent& content)
{
    return media.file->write(editsFor(edits, content));
}

std::string audiocore::writeFront(TagLib::File& file, const Place& place, const FileEdits& edits,
                                  TagRank rank)
{
    const std::optional<ByteVector> old = bytesAt(file, place);
    if (!old)
        return tooLarge;
    std::optional<Id3v2Bytes> tag = Id3v2Bytes::parse(*old);
    if (!tag)
        return cannotBeKept;
    applyTo(*tag, edits, rank);
    const std::optional<ByteVector> bytes = tag->render(unsigned(place.size));
    if (!bytes)
        return tooLarge;
    putAt(file, place, *bytes);
    return std::string();
}

std::string audiocore::writeApe(TagLib::File& file, const FileEdits& edits, TagRank rank)
{
    const Place place = findApe(file);
    const std::optional<ByteVector> old = bytesAt(file, place);
    if (!old)
        return tooLarge;
    std::optional<ApeBytes> tag = ApeBytes::parse(*old);
    if (!tag)
        return cannotBeKept;
    applyTo(*tag, edits, rank);
    putAt(file, place, tag->render());
    return std::string();
}

void audiocore::writeId3v1(TagLib::File& file, const FileEdits& edits)
{
    constexpr unsigned int commentEnd = 125;
    constexpr unsigned int genre = 127;
    static constexpr struct
    {
        int type;
        unsigned int begin;
        unsigned int size;
    } texts[] = {{TAG_TITLE, 3, 30}, {TAG_ARTIST, 33, 30}, {TAG_ALBUM, 63, 30}, {TAG_YEAR, 93, 4}};

    const Place place = findId3v1(file);
    ByteVector tag = bytesAt(file, place).value_or(ByteVector());
    if (tag.isEmpty())
        return;
    for (const auto& text : texts)
        if (const auto& edit = edits.further.texts[size_t(text.type)])
            writeOver(tag, text.begin, text.size, *edit);
    if (const auto& edit = edits.further.texts[TAG_GENRE])
        tag[int(genre)] = char(TagLib::ID3v1::genreIndex(String(*edit, String::UTF8)));
    // A comment that is as long as can be leaves no room for a track.
    if (const auto& edit = edits.further.texts[TAG_TRACK]; edit && tag[int(commentEnd)] == 0) {
        const int track = edit->empty() ? 0 : std::stoi(edit->substr(0, 6));
        tag[int(commentEnd) + 1] = track <= 255 ? char(track) : '\0';
    }
    putAt(file, place, tag);
}
