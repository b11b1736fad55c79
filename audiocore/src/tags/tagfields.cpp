#include "tags/tagfields.h"

#include "audiocore/tagitem.h"
#include "base/text.h"
#include "tags/apebytes.h"
#include "tags/commentbytes.h"
#include "tags/id3v2bytes.h"
#include "tags/mp4file.h"
#include "tags/pictures.h"
#include "tags/taglimits.h"
#include "tags/tagplaces.h"

#include <taglib/apetag.h>
#include <taglib/asftag.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>
#include <taglib/xiphcomment.h>

#include <algorithm>

using audiocore::TagContent;
using audiocore::TagEdits;
using TagLib::String;

namespace {
const char* const propertyNames[audiocore::textTypes] = {"TITLE", "ARTIST", "ALBUM",
                                                         "GENRE", "DATE",   "TRACKNUMBER"};
const char* const id3v2Frames[audiocore::textTypes] = {"TIT2", "TPE1", "TALB", "TCON", "TDRC", "TRCK"};

const char* const apeKeys[audiocore::textTypes] = {"TITLE", "ARTIST", "ALBUM", "GENRE", "YEAR", "TRACK"};

std::string shownText(int type, const std::string& text)
{
    if (type == TAG_YEAR)
        return base::yearOf(text);
    return type == TAG_TRACK ? base::trackOf(text) : text;
}

/// Several values joined; but of titles the first one, since it is by titles that duplicates are told.
std::string valueOf(const TagLib::PropertyMap& properties, int type)
{
    TagLib::StringList values = properties[propertyNames[type]];
    if (values.isEmpty() && type == TAG_YEAR)
        values = properties["YEAR"];
    std::string joined;
    for (const String& value : values) {
        if (value.isEmpty() || (type == TAG_TITLE && !joined.empty()))
            continue;
        joined += (joined.empty() ? "" : "; ") + value.to8Bit(true);
    }
    // A zero inside would end the text for whoever reads it as zero-terminated.
    joined.erase(std::remove(joined.begin(), joined.end(), '\0'), joined.end());
    return shownText(type, joined);
}

/// The tag's own fields. The library's operation is not virtual, and the general one joins several values.
TagLib::PropertyMap propertiesOf(const TagLib::Tag& tag)
{
    if (const auto* id3v2 = dynamic_cast<const TagLib::ID3v2::Tag*>(&tag)) {
        // Only the frames in question: the others cost more than all the rest of reading.
        TagLib::PropertyMap properties;
        for (const char* id : id3v2Frames)
            for (const TagLib::ID3v2::Frame* frame : id3v2->frameListMap()[id])
                if (const auto* text = dynamic_cast<const TagLib::ID3v2::TextIdentificationFrame*>(frame))
                    properties.merge(text->asProperties());
        return properties;
    }
    if (const auto* xiph = dynamic_cast<const TagLib::Ogg::XiphComment*>(&tag))
        return xiph->properties();
    if (const auto* ape = dynamic_cast<const TagLib::APE::Tag*>(&tag))
        return ape->properties();
    if (const auto* asf = dynamic_cast<const TagLib::ASF::Tag*>(&tag))
        return asf->properties();
    return tag.properties();
}

TagLib::PropertyMap propertiesOf(audiocore::Mp4File& file)
{
    TagLib::PropertyMap properties;
    for (int type = 0; type < audiocore::textTypes; ++type)
        properties.insert(propertyNames[type], file.texts(type));
    return properties;
}

void addValues(TagContent& content, const TagLib::PropertyMap& properties)
{
    for (int type = 0; type < audiocore::textTypes; ++type)
        if (content.texts[size_t(type)].empty())
            content.texts[size_t(type)] = valueOf(properties, type);
}

/// Sets what is still empty, by type, from what `textOf` finds.
template <class TextOf>
void addTexts(TagContent& content, TextOf textOf)
{
    for (int type = 0; type < audiocore::textTypes; ++type) {
        std::string& text = content.texts[size_t(type)];
        if (!text.empty())
            continue;
        text = textOf(type);
        if (type == TAG_TITLE) // the first value alone
            text.resize(std::min(text.find('\0', text.find_first_not_of('\0')), text.size()));
        text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
        text = shownText(type, text);
    }
}

template <class Tag>
void addTextsOf(TagContent& content, const std::optional<Tag>& tag)
{
    if (tag)
        addTexts(content, [&tag](int type) { return tag->text(type); });
}

/// A tag that is taken apart a second time, unless that takes too much.
template <class Bytes>
std::optional<Bytes> parsed(const std::optional<TagLib::ByteVector>& tag)
{
    return tag && long(tag->size()) <= audiocore::mostTagBytes ? Bytes::parse(*tag) : std::nullopt;
}

bool isIncomplete(const TagContent& content)
{
    return std::any_of(content.texts.begin(), content.texts.end(),
                       [](const std::string& text) { return text.empty(); });
}

/// The library makes nothing of texts that are not in the encoding that they are marked with. Their bytes are
/// read again only where it came upon such fields.
void addUnreadTexts(TagContent& content, const audiocore::MediaFile& media, const TagLib::Tag& tag)
{
    TagLib::File& file = *media.file;
    if (!isIncomplete(content))
        return;
    const auto unread = [&content](const auto& contains, const char* const* names) {
        for (size_t type = 0; type < size_t(audiocore::textTypes); ++type)
            if (content.texts[type].empty() && contains(names[type]))
                return true;
        return false;
    };
    if (const auto* id3v2 = dynamic_cast<const TagLib::ID3v2::Tag*>(&tag)) {
        const auto contains = [id3v2](const char* id) { return !id3v2->frameList(id).isEmpty(); };
        if (unread(contains, id3v2Frames) || id3v2->header()->majorVersion() == 2)
            if (const auto bytes = parsed<audiocore::Id3v2Bytes>(audiocore::id3v2Bytes(file)))
                addTexts(content, [&bytes](int type) { return bytes->unreadText(type); });
    } else if (const auto* ape = dynamic_cast<const TagLib::APE::Tag*>(&tag)) {
        const auto contains = [ape](const char* key) { return ape->itemListMap().contains(key); };
        if (unread(contains, apeKeys))
            addTextsOf(content, parsed<audiocore::ApeBytes>(bytesAt(file, audiocore::findApe(file))));
    } else if (dynamic_cast<const TagLib::Ogg::XiphComment*>(&tag)) {
        // It leaves no trace of them here.
        addTextsOf(content, audiocore::CommentBytes::parse(audiocore::commentBytes(media)));
    }
}
} // namespace

bool TagEdits::isEmpty() const
{
    return !picture &&
           std::none_of(texts.begin(), texts.end(), [](const auto& text) { return text.has_value(); });
}

TagContent audiocore::readTags(const MediaFile& media)
{
    TagContent content;
    if (auto* mp4 = dynamic_cast<Mp4File*>(media.file.get()))
        addValues(content, propertiesOf(*mp4));
    for (TagLib::Tag* tag : tagsOf(media)) {
        addValues(content, propertiesOf(*tag));
        addUnreadTexts(content, media, *tag);
    }
    readPictures(media, content);
    return content;
}

TagEdits audiocore::changesOf(const TagEdits& edits, const TagContent& content)
{
    TagEdits changes;
    for (size_t type = 0; type < size_t(textTypes); ++type) {
        const auto& edit = edits.texts[type];
        if (!edit)
            continue;
        const std::string shown = shownText(int(type), *edit);
        if (shown != content.texts[type])
            changes.texts[type] = shown;
    }
    const int wanted = edits.picture && !edits.picture->isEmpty() ? 1 : 0;
    if (edits.picture && (*edits.picture != content.picture || content.pictures != wanted))
        changes.picture = edits.picture;
    return changes;
}
