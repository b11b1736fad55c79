#include "pictures.h"

#include <taglib/apetag.h>
#include <taglib/asftag.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/flacfile.h>
#include <taglib/flacpicture.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4coverart.h>
#include <taglib/mp4tag.h>
#include <taglib/mpegfile.h>
#include <taglib/xiphcomment.h>

using TagLib::ByteVector;
using TagLib::String;

namespace {
constexpr unsigned int largestPicture = 64u * 1024 * 1024;
const char* const apeFront = "COVER ART (FRONT)";

/// Picks the front cover from a list of picture objects, else the first.
class Choice
{
public:
    void offer(const ByteVector& bytes, bool front)
    {
        if (bytes.isEmpty() || bytes.size() > largestPicture)
            return;
        if (m_chosen.isEmpty() || (front && !m_front))
            m_chosen = bytes;
        m_front = m_front || front;
    }
    const ByteVector& bytes() const { return m_chosen; }

private:
    ByteVector m_chosen;
    bool m_front = false;
};

String mimeType(const ByteVector& bytes)
{
    if (bytes.startsWith("\x89PNG"))
        return "image/png";
    if (bytes.startsWith("GIF8"))
        return "image/gif";
    if (bytes.startsWith("BM"))
        return "image/bmp";
    return bytes.mid(8, 4) == ByteVector("WEBP") ? "image/webp" : "image/jpeg";
}

void offerFlac(Choice& choice, const TagLib::List<TagLib::FLAC::Picture*>& pictures)
{
    for (const TagLib::FLAC::Picture* picture : pictures)
        choice.offer(picture->data(), picture->type() == TagLib::FLAC::Picture::FrontCover);
}

TagLib::FLAC::Picture* flacPicture(const ByteVector& bytes)
{
    auto* picture = new TagLib::FLAC::Picture;
    picture->setType(TagLib::FLAC::Picture::FrontCover);
    picture->setMimeType(mimeType(bytes));
    picture->setData(bytes);
    return picture;
}

void offerId3v2(Choice& choice, const TagLib::ID3v2::Tag& tag)
{
    for (const TagLib::ID3v2::Frame* frame : tag.frameListMap()["APIC"])
        if (const auto* picture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame))
            choice.offer(picture->picture(),
                         picture->type() == TagLib::ID3v2::AttachedPictureFrame::FrontCover);
}

void offerApe(Choice& choice, const TagLib::APE::Tag& tag)
{
    for (const auto& [key, item] : tag.itemListMap()) {
        if (!key.startsWith("COVER ART") || item.type() != TagLib::APE::Item::Binary)
            continue;
        const ByteVector data = item.binaryData();
        const int nameEnd = data.find('\0');
        choice.offer(nameEnd < 0 ? data : data.mid(unsigned(nameEnd) + 1), key == apeFront);
    }
}

void offerMp4(Choice& choice, const TagLib::MP4::Tag& tag)
{
    if (tag.contains("covr"))
        for (const TagLib::MP4::CoverArt& cover : tag.item("covr").toCoverArtList())
            choice.offer(cover.data(), false);
}

void offerAsf(Choice& choice, const TagLib::ASF::Tag& tag)
{
    for (const TagLib::ASF::Attribute& attribute : tag.attribute("WM/Picture")) {
        const TagLib::ASF::Picture picture = attribute.toPicture();
        choice.offer(picture.picture(), picture.type() == TagLib::ASF::Picture::FrontCover);
    }
}

void setId3v2(TagLib::ID3v2::Tag& tag, const ByteVector& bytes)
{
    tag.removeFrames("APIC");
    if (bytes.isEmpty())
        return;
    auto* frame = new TagLib::ID3v2::AttachedPictureFrame;
    frame->setType(TagLib::ID3v2::AttachedPictureFrame::FrontCover);
    frame->setMimeType(mimeType(bytes));
    frame->setPicture(bytes);
    tag.addFrame(frame);
}

void setApe(TagLib::APE::Tag& tag, const ByteVector& bytes)
{
    TagLib::StringList covers;
    for (const auto& [key, item] : tag.itemListMap())
        if (key.startsWith("COVER ART"))
            covers.append(key);
    for (const String& key : covers)
        tag.removeItem(key);
    if (bytes.isEmpty())
        return;
    ByteVector data(mimeType(bytes) == "image/png" ? "Cover.png" : "Cover.jpg");
    data.append('\0');
    data.append(bytes);
    tag.setItem(apeFront, TagLib::APE::Item(apeFront, data, true));
}

void setMp4(TagLib::MP4::Tag& tag, const ByteVector& bytes)
{
    tag.removeItem("covr");
    if (bytes.isEmpty())
        return;
    const bool png = mimeType(bytes) == "image/png";
    TagLib::MP4::CoverArtList covers;
    covers.append(
        TagLib::MP4::CoverArt(png ? TagLib::MP4::CoverArt::PNG : TagLib::MP4::CoverArt::JPEG, bytes));
    tag.setItem("covr", covers);
}

void setAsf(TagLib::ASF::Tag& tag, const ByteVector& bytes)
{
    tag.removeItem("WM/Picture");
    if (bytes.isEmpty())
        return;
    TagLib::ASF::Picture picture;
    picture.setType(TagLib::ASF::Picture::FrontCover);
    picture.setMimeType(mimeType(bytes));
    picture.setPicture(bytes);
    tag.setAttribute("WM/Picture", picture);
}
} // namespace

ByteVector audiocore::readPicture(const MediaFile& media)
{
    Choice choice;
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(media.file.get()))
        offerFlac(choice, flac->pictureList());
    for (TagLib::Tag* tag : tagsOf(media)) {
        if (auto* id3v2 = dynamic_cast<TagLib::ID3v2::Tag*>(tag))
            offerId3v2(choice, *id3v2);
        else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(tag))
            offerFlac(choice, xiph->pictureList());
        else if (auto* ape = dynamic_cast<TagLib::APE::Tag*>(tag))
            offerApe(choice, *ape);
        else if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(tag))
            offerMp4(choice, *mp4);
        else if (auto* asf = dynamic_cast<TagLib::ASF::Tag*>(tag))
            offerAsf(choice, *asf);
    }
    return choice.bytes();
}

void audiocore::writePicture(const MediaFile& media, const std::vector<TagLib::Tag*>& tags,
                             const ByteVector& bytes)
{
    // A FLAC file has picture blocks of its own; the comment of an Ogg file carries the picture itself.
    auto* flac = dynamic_cast<TagLib::FLAC::File*>(media.file.get());
    if (flac) {
        flac->removePictures();
        if (!bytes.isEmpty())
            flac->addPicture(flacPicture(bytes));
    }
    bool written = flac != nullptr;
    for (TagLib::Tag* tag : tags) {
        const ByteVector own = written ? ByteVector() : bytes;
        if (auto* id3v2 = dynamic_cast<TagLib::ID3v2::Tag*>(tag))
            setId3v2(*id3v2, own);
        else if (auto* ape = dynamic_cast<TagLib::APE::Tag*>(tag))
            setApe(*ape, own);
        else if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(tag))
            setMp4(*mp4, own);
        else if (auto* asf = dynamic_cast<TagLib::ASF::Tag*>(tag))
            setAsf(*asf, own);
        else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(tag)) {
            xiph->removeAllPictures();
            if (!own.isEmpty())
                xiph->addPicture(flacPicture(own));
        } else
            continue;
        written = true;
    }
}
