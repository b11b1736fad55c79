#include "tagfields.h"

#include "audiocore/tagitem.h"
#include "pictures.h"
#include "text.h"

#include <taglib/apefile.h>
#include <taglib/apetag.h>
#include <taglib/asftag.h>
#include <taglib/flacfile.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>
#include <taglib/mp4tag.h>
#include <taglib/mpegfile.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>

#include <algorithm>

using audiocore::TagContent;
using audiocore::TagEdits;
using TagLib::String;

namespace {
const char* const propertyNames[audiocore::textTypes] = {"TITLE", "ARTIST", "ALBUM",
                                                         "GENRE", "DATE",   "TRACKNUMBER"};
const char* const id3v2Frames[audiocore::textTypes] = {"TIT2", "TPE1", "TALB", "TCON", "TDRC", "TRCK"};

std::string shownText(int type, const std::string& text)
{
    if (type == TAG_YEAR)
        return audiocore::yearOf(text);
    return type == TAG_TRACK ? audiocore::trackOf(text) : text;
}

std::string valueOf(const TagLib::PropertyMap& properties, int type)
{
    TagLib::StringList values = properties[propertyNames[type]];
    if (values.isEmpty() && type == TAG_YEAR)
        values = properties["YEAR"];
    std::string joined;
    for (const String& value : values) {
        if (value.isEmpty())
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
    if (const auto* mp4 = dynamic_cast<const TagLib::MP4::Tag*>(&tag))
        return mp4->properties();
    if (const auto* ape = dynamic_cast<const TagLib::APE::Tag*>(&tag))
        return ape->properties();
    if (const auto* asf = dynamic_cast<const TagLib::ASF::Tag*>(&tag))
        return asf->properties();
    return tag.properties();
}

/// "/12" of "3/12", empty without a total.
std::string totalOf(const String& track)
{
    const std::string text = track.to8Bit(true);
    const size_t slash = text.find('/');
    return slash == std::string::npos ? std::string() : text.substr(slash);
}

void setId3v2Text(TagLib::ID3v2::Tag& tag, int type, const std::string& value)
{
    const TagLib::ByteVector id(id3v2Frames[type]);
    const TagLib::ID3v2::FrameList& frames = tag.frameList(id);
    std::string text = value;
    if (type == TAG_TRACK && !value.empty() && !frames.isEmpty())
        text += totalOf(frames.front()->toString());
    tag.removeFrames(id);
    if (text.empty())
        return;
    auto* frame = new TagLib::ID3v2::TextIdentificationFrame(id, String::Latin1);
    frame->setText(String(text, String::UTF8)); // a wider encoding is chosen where Latin-1 does not do
    tag.addFrame(frame);
}

void setMp4Track(TagLib::MP4::Tag& tag, const std::string& value)
{
    const int total = tag.contains("trkn") ? tag.item("trkn").toIntPair().second : 0;
    const int number = value.empty() ? 0 : std::stoi(value.substr(0, 6));
    if (number == 0 && total == 0)
        tag.removeItem("trkn");
    else
        tag.setItem("trkn", TagLib::MP4::Item(number, total));
}

void setXiphTrack(TagLib::Ogg::XiphComment& tag, const std::string& value)
{
    const TagLib::StringList old = tag.fieldListMap()["TRACKNUMBER"];
    tag.removeFields("TRACKNUM");
    tag.removeFields("TRACKNUMBER");
    if (!value.empty())
        tag.addField("TRACKNUMBER",
                     String(value + (old.isEmpty() ? std::string() : totalOf(old.front())), String::UTF8));
}

void setApeTrack(TagLib::APE::Tag& tag, const std::string& value)
{
    const TagLib::APE::ItemListMap& items = tag.itemListMap();
    const std::string total = items.contains("TRACK") ? totalOf(items["TRACK"].toString()) : std::string();
    tag.removeItem("TRACK");
    if (!value.empty())
        tag.addValue("TRACK", String(value + total, String::UTF8), true);
}

void setAsfTrack(TagLib::ASF::Tag& tag, const std::string& value)
{
    const TagLib::ASF::AttributeList old = tag.attribute("WM/TrackNumber");
    const std::string total = old.isEmpty() ? std::string() : totalOf(old.front().toString());
    tag.removeItem("WM/TrackNumber");
    if (!value.empty())
        tag.setAttribute("WM/TrackNumber", TagLib::ASF::Attribute(String(value + total, String::UTF8)));
}

void setTrack(TagLib::Tag& tag, const std::string& value)
{
    if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(&tag))
        setMp4Track(*mp4, value);
    else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(&tag))
        setXiphTrack(*xiph, value);
    else if (auto* ape = dynamic_cast<TagLib::APE::Tag*>(&tag))
        setApeTrack(*ape, value);
    else if (auto* asf = dynamic_cast<TagLib::ASF::Tag*>(&tag))
        setAsfTrack(*asf, value);
    else
        tag.setTrack(value.empty() ? 0 : unsigned(std::stoul(value.substr(0, 6))));
}

void setText(TagLib::Tag& tag, int type, const std::string& value)
{
    if (auto* id3v2 = dynamic_cast<TagLib::ID3v2::Tag*>(&tag)) {
        setId3v2Text(*id3v2, type, value);
        return;
    }
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
        if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(&tag))
            mp4->removeItem("gnre"); // the numbered genre would go on contradicting the text
        tag.setGenre(text);
        break;
    case TAG_YEAR:
        tag.setYear(value.empty() ? 0 : unsigned(std::stoul(value.substr(0, 4))));
        break;
    case TAG_TRACK:
        setTrack(tag, value);
        break;
    default:
        break;
    }
}

/// The tags that an edit goes to: those that are there, and the format's own where there is none.
std::vector<TagLib::Tag*> tagsToWrite(const audiocore::MediaFile& media)
{
    std::vector<TagLib::Tag*> tags = audiocore::tagsOf(media);
    TagLib::Tag* own = nullptr;
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(media.file.get()))
        own = mpeg->ID3v2Tag(true);
    else if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(media.file.get()))
        own = flac->xiphComment(true);
    else if (auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(media.file.get()))
        own = wav->ID3v2Tag();
    else if (auto* ape = dynamic_cast<TagLib::APE::File*>(media.file.get()))
        own = ape->APETag(true);
    if (own && std::find(tags.begin(), tags.end(), own) == tags.end())
        tags.insert(tags.begin(), own);
    return tags;
}

/// Where a format's own tag is new, it takes over what the others say, so that nothing seems lost to readers
/// that look at it alone.
void fillNewTag(TagLib::Tag& tag, const TagContent& content)
{
    if (!tag.isEmpty())
        return;
    for (int type = 0; type < audiocore::textTypes; ++type)
        if (!content.texts[size_t(type)].empty())
            setText(tag, type, content.texts[size_t(type)]);
}

/// The version to save a tag in: its own, unless that would cost frames that the library only writes in the
/// newer one, but which files carry in the older one all the same.
TagLib::ID3v2::Version versionFor(const TagLib::ID3v2::Tag& tag)
{
    if (tag.header()->majorVersion() == 4)
        return TagLib::ID3v2::v4;
    for (const char* frame : {"ASPI", "EQU2", "RVA2", "SEEK", "SIGN", "TDRL", "TDTG", "TMOO", "TPRO"})
        if (!tag.frameList(frame).isEmpty())
            return TagLib::ID3v2::v4;
    return TagLib::ID3v2::v3;
}

bool save(const audiocore::MediaFile& media)
{
    using TagLib::MPEG::File;
    if (auto* mpeg = dynamic_cast<File*>(media.file.get())) {
        // Players of raw AAC know a tag at the beginning only.
        if (media.format == AUDIO_FORMAT_AAC)
            return mpeg->save(File::ID3v2, File::StripOthers, TagLib::ID3v2::v4, File::DoNotDuplicate);
        const int kept = (mpeg->hasAPETag() ? File::APE : 0) | (mpeg->hasID3v1Tag() ? File::ID3v1 : 0);
        return mpeg->save(File::ID3v2 | kept, File::StripNone, versionFor(*mpeg->ID3v2Tag()),
                          File::DoNotDuplicate);
    }
    if (auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(media.file.get())) {
        using Wav = TagLib::RIFF::WAV::File;
        const int tags = Wav::ID3v2 | (wav->hasInfoTag() ? Wav::Info : 0);
        return wav->save(Wav::TagTypes(tags), Wav::StripNone, versionFor(*wav->ID3v2Tag()));
    }
    return media.file->save();
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
    for (TagLib::Tag* tag : tagsOf(media)) {
        const TagLib::PropertyMap properties = propertiesOf(*tag);
        for (int type = 0; type < textTypes; ++type)
            if (content.texts[size_t(type)].empty())
                content.texts[size_t(type)] = valueOf(properties, type);
    }
    content.picture = readPicture(media);
    return content;
}

TagEdits audiocore::changesOf(const TagEdits& edits, const TagContent& content)
{
    TagEdits changes;
    for (size_t type = 0; type < size_t(textTypes); ++type) {
        if (!edits.texts[type])
            continue;
        const std::string shown = shownText(int(type), *edits.texts[type]);
        if (shown != content.texts[type])
            changes.texts[type] = shown;
    }
    if (edits.picture && *edits.picture != content.picture)
        changes.picture = edits.picture;
    return changes;
}

bool audiocore::writeTags(const MediaFile& media, const TagEdits& edits)
{
    const TagContent content = readTags(media);
    const std::vector<TagLib::Tag*> tags = tagsToWrite(media);
    for (TagLib::Tag* tag : tags) {
        fillNewTag(*tag, content);
        for (size_t type = 0; type < size_t(textTypes); ++type)
            if (edits.texts[type])
                setText(*tag, int(type), *edits.texts[type]);
    }
    if (edits.picture)
        writePicture(media, tags, *edits.picture);
    return save(media);
}
