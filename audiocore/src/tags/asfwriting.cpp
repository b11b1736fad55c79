#include "tags/asfwriting.h"

#include "audiocore/tagitem.h"
#include "media/checkedstream.h"
#include "tags/pictures.h"
#include "tags/tagfields.h"
#include "tags/tagtext.h"

#include <taglib/asffile.h>
#include <taglib/asftag.h>

using audiocore::CheckedStream;
using TagLib::String;

namespace {
void setAsfTrack(TagLib::ASF::Tag& tag, const std::string& value)
{
    const TagLib::ASF::AttributeList old = tag.attribute("WM/TrackNumber");
    const std::string total =
        old.isEmpty() ? std::string() : audiocore::totalOf(old.front().toString().to8Bit(true));
    tag.removeItem("WM/TrackNumber");
    if (!value.empty())
        tag.setAttribute("WM/TrackNumber", TagLib::ASF::Attribute(String(value + total, String::UTF8)));
}

void setAsfText(TagLib::ASF::Tag& tag, int type, const std::string& value)
{
    const String text(value, String::UTF8);
    switch (type) {
    case TAG_TITLE:
        tag.setTitle(text);
        break;
    case TAG_ARTIST:
        tag.setArtist(text);
        break;
    case TAG_ALBUM:
        tag.setAlbum(text);
        break;
    case TAG_GENRE:
        tag.setGenre(text);
        break;
    case TAG_YEAR:
        tag.setYear(value.empty() ? 0 : unsigned(std::stoul(value.substr(0, 4))));
        break;
    case TAG_TRACK:
        setAsfTrack(tag, value);
        break;
    default:
        break;
    }
}

/// The tag library leaves the file's length in a WMA header as it was; players guess the duration from it.
void correctAsfSize(CheckedStream& stream)
{
    static const TagLib::ByteVector fileProperties(
        "\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11\x8E\xE4\x00\xC0\x0C\x20\x53\x65", 16);
    constexpr unsigned long headerSearch = 1024 * 1024;
    constexpr long sizeOffset = 40;
    stream.seek(0);
    const TagLib::ByteVector header = stream.readBlock(headerSearch);
    const int object = header.find(fileProperties);
    if (object < 0)
        return;
    stream.seek(object + sizeOffset);
    stream.writeBlock(TagLib::ByteVector::fromLongLong(stream.length(), false));
}
} // namespace

bool audiocore::writeAsf(TagLib::ASF::File& file, CheckedStream& stream, const TagEdits& edits)
{
    for (int type = 0; type < textTypes; ++type)
        if (const auto& text = edits.texts[size_t(type)])
            setAsfText(*file.tag(), type, *text);
    if (edits.picture)
        setAsfPicture(*file.tag(), *edits.picture);
    if (!file.save())
        return false;
    correctAsfSize(stream);
    return true;
}
