#include "tags/tagreading.h"

#include "audiocore/tagitem.h"
#include "tags/apebytes.h"
#include "tags/commentbytes.h"
#include "tags/id3v2bytes.h"
#include "tags/id3v2frames.h"
#include "tags/taglimits.h"

#include <taglib/apetag.h>
#include <taglib/asftag.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/flacpicture.h>
#include <taglib/id3v1genres.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>
#include <taglib/textidentificationframe.h>
#include <taglib/tpropertymap.h>
#include <taglib/xiphcomment.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

using audiocore::PictureChoice;
using audiocore::TagContent;
using audiocore::TagReading;
using TagLib::ByteVector;
using TagLib::String;
using TagLib::StringList;

namespace {
const String propertyNames[audiocore::textTypes] = {"TITLE", "ARTIST", "ALBUM",
                                                    "GENRE", "DATE",   "TRACKNUMBER"};
constexpr std::string_view id3v2Frames[audiocore::textTypes] = {"TIT2", "TPE1", "TALB",
                                                                "TCON", "TDRC", "TRCK"};
const char* const apeKeys[audiocore::textTypes] = {"TITLE", "ARTIST", "ALBUM", "GENRE", "YEAR", "TRACK"};
const char* const apeFront = "COVER ART (FRONT)";

/// Several values joined; but of titles the first one, since it is by titles that duplicates are told.
std::string joined(const StringList& values, int type)
{
    std::string text;
    for (const String& value : values) {
        if (value.isEmpty() || (type == TAG_TITLE && !text.empty()))
            continue;
        text += (text.empty() ? "" : "; ") + value.to8Bit(true);
    }
    return text;
}

/// A zero inside would end the text for whoever reads it as zero-terminated.
std::string withoutZeros(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    return text;
}

using Fields = TagLib::Map<String, StringList>;

StringList valuesOf(const Fields& fields, const String& name)
{
    const auto found = fields.find(name);
    return found == fields.end() ? StringList() : found->second;
}

/// What the frames in question say, each looked at once: taking all for properties costs more than all the
/// rest of reading.
struct FrameTexts
{
    std::array<StringList, audiocore::textTypes> values;
    std::array<bool, audiocore::textTypes> isThere{}; ///< whether there is such a frame, whatever it says

    explicit FrameTexts(const TagLib::ID3v2::Tag& tag)
    {
        for (const TagLib::ID3v2::Frame* frame : tag.frameList()) {
            const ByteVector id = frame->frameID();
            for (std::size_t type = 0; type < values.size(); ++type)
                if (audiocore::id3v2::viewOf(id) == id3v2Frames[type])
                    take(type, *frame);
        }
    }
    void take(std::size_t type, const TagLib::ID3v2::Frame& frame)
    {
        isThere[type] = true;
        const auto* const text = dynamic_cast<const TagLib::ID3v2::TextIdentificationFrame*>(&frame);
        if (!text)
            return;
        for (const String& value : text->fieldList())
            values[type].append(type == TAG_GENRE ? genreOf(value) : value);
    }
    /// A number is one of those that ID3v1 has.
    static String genreOf(const String& value)
    {
        bool isNumber = false;
        const int number = value.toInt(&isNumber);
        return isNumber ? TagLib::ID3v1::genre(number) : value;
    }
};

void offer(PictureChoice& choice, const TagLib::ID3v2::Tag& tag)
{
    for (const TagLib::ID3v2::Frame* frame : tag.frameList())
        if (const auto* picture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame))
            choice.offer(picture->picture(),
                         picture->type() == TagLib::ID3v2::AttachedPictureFrame::FrontCover);
}

void offer(PictureChoice& choice, const TagLib::APE::Tag& tag)
{
    for (const auto& [key, item] : tag.itemListMap()) {
        if (!key.startsWith("COVER ART") || item.type() != TagLib::APE::Item::Binary)
            continue;
        const ByteVector data = item.binaryData();
        const int nameEnd = data.find('\0');
        choice.offer(nameEnd < 0 ? data : data.mid(unsigned(nameEnd) + 1), key == apeFront);
    }
}

void offer(PictureChoice& choice, const TagLib::ASF::Tag& tag)
{
    for (const TagLib::ASF::Attribute& attribute : tag.attribute("WM/Picture")) {
        const TagLib::ASF::Picture picture = attribute.toPicture();
        choice.offer(picture.picture(), picture.type() == TagLib::ASF::Picture::FrontCover);
    }
}

/// A tag that is taken apart a second time, unless that takes too much.
template <class Tag>
std::optional<Tag> parsed(const std::optional<ByteVector>& bytes)
{
    return bytes && long(bytes->size()) <= audiocore::mostTagBytes ? Tag::parse(*bytes) : std::nullopt;
}
} // namespace

void TagReading::add(const TagLib::ID3v2::Tag* tag, const Bytes& bytes)
{
    if (!tag)
        return;
    const FrameTexts frames(*tag);
    addTexts([&frames](int type) { return frames.values.at(std::size_t(type)); });
    offer(m_pictures, *tag);
    const auto contains = [&frames](int type) { return frames.isThere.at(std::size_t(type)); };
    if (isComplete() || (!hasUnread(contains) && tag->header()->majorVersion() != 2))
        return;
    if (const auto again = parsed<Id3v2Bytes>(bytes()))
        addUnread([&again](int type) { return again->unreadText(type); });
}

void TagReading::add(const TagLib::APE::Tag* tag, const Bytes& bytes)
{
    if (!tag)
        return;
    addProperties(tag->properties());
    offer(m_pictures, *tag);
    const auto contains = [tag](int type) { return tag->itemListMap().contains(apeKeys[type]); };
    if (!hasUnread(contains))
        return;
    if (const auto again = parsed<ApeBytes>(bytes()))
        addUnread([&again](int type) { return again->text(type); });
}

void TagReading::add(TagLib::Ogg::XiphComment* tag, const Bytes& bytes)
{
    if (!tag)
        return;
    addProperties(tag->fieldListMap());
    addPictures(tag->pictureList());
    // The library leaves no trace of what it made nothing of.
    if (isComplete())
        return;
    std::optional<ByteVector> comment = bytes();
    if (comment)
        CommentBytes::boundFields(*comment);
    if (const auto again = parsed<CommentBytes>(comment))
        addUnread([&again](int type) { return again->text(type); });
}

void TagReading::add(const TagLib::ASF::Tag* tag)
{
    if (!tag)
        return;
    addProperties(tag->properties());
    offer(m_pictures, *tag);
}

void TagReading::addTexts(const TagLib::Tag* tag)
{
    if (tag)
        addProperties(tag->properties());
}

void TagReading::addProperties(const Fields& fields)
{
    addTexts([&fields](int type) { return valuesOf(fields, propertyNames[type]); });
}

void TagReading::addTexts(const std::function<StringList(int)>& valuesOf)
{
    for (int type = 0; type < textTypes; ++type)
        if (std::string& text = m_content.texts[size_t(type)]; text.empty())
            text = shownText(type, withoutZeros(joined(valuesOf(type), type)));
}

void TagReading::addPictures(const TagLib::List<TagLib::FLAC::Picture*>& pictures)
{
    for (const TagLib::FLAC::Picture* picture : pictures)
        m_pictures.offer(picture->data(), picture->type() == TagLib::FLAC::Picture::FrontCover);
}

TagContent TagReading::takeContent()
{
    m_content.picture = m_pictures.bytes();
    m_content.pictures = m_pictures.count();
    return std::exchange(m_content, TagContent());
}

void TagReading::addUnread(const std::function<std::string(int)>& textOf)
{
    for (int type = 0; type < textTypes; ++type) {
        if (!m_content.texts[size_t(type)].empty())
            continue;
        std::string text = textOf(type);
        if (type == TAG_TITLE) // the first value alone
            text.resize(std::min(text.find('\0', text.find_first_not_of('\0')), text.size()));
        m_content.texts[size_t(type)] = shownText(type, withoutZeros(text));
    }
}

/// Whether the tag contains a field of a type that still has no text.
template <class Contains>
bool TagReading::hasUnread(const Contains& contains) const
{
    for (int type = 0; type < textTypes; ++type)
        if (m_content.texts[size_t(type)].empty() && contains(type))
            return true;
    return false;
}

bool TagReading::isComplete() const
{
    return std::none_of(m_content.texts.begin(), m_content.texts.end(),
                        [](const std::string& text) { return text.empty(); });
}
