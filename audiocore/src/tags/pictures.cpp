#include "tags/pictures.h"

#include "tags/mp4file.h"

#include <taglib/apetag.h>
#include <taglib/asftag.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/flacfile.h>
#include <taglib/flacpicture.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>

using TagLib::ByteVector;

namespace {
/// What our own player gets past, whatever the format wraps it in.
constexpr unsigned int largestShown = 32u * 1024 * 1024;
const char* const apeFront = "COVER ART (FRONT)";

/// Picks the front cover from a list of picture objects, else the first.
class Choice
{
public:
    void offer(const ByteVector& bytes, bool front)
    {
        if (bytes.isEmpty())
            return;
        ++m_count;
        if (bytes.size() > largestShown)
            return;
        if (m_chosen.isEmpty() || (front && !m_front))
            m_chosen = bytes;
        m_front = m_front || front;
    }
    /// One that is there and is not to be chosen.
    void passOver() { ++m_count; }
    const ByteVector& bytes() const { return m_chosen; }
    int count() const { return m_count; }

private:
    int m_count = 0;
    ByteVector m_chosen;
    bool m_front = false;
};

void offerFlac(Choice& choice, const TagLib::List<TagLib::FLAC::Picture*>& pictures)
{
    for (const TagLib::FLAC::Picture* picture : pictures)
        choice.offer(picture->data(), picture->type() == TagLib::FLAC::Picture::FrontCover);
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

/// The first one; the others are not read.
void offerMp4(Choice& choice, audiocore::Mp4File& file)
{
    for (const audiocore::Mp4Value& picture : file.pictures()) {
        if (choice.bytes().isEmpty() && picture.size > 0 && picture.size <= largestShown)
            choice.offer(file.bytesOf(picture), false);
        else if (picture.size > 0)
            choice.passOver();
    }
}

void offerAsf(Choice& choice, const TagLib::ASF::Tag& tag)
{
    for (const TagLib::ASF::Attribute& attribute : tag.attribute("WM/Picture")) {
        const TagLib::ASF::Picture picture = attribute.toPicture();
        choice.offer(picture.picture(), picture.type() == TagLib::ASF::Picture::FrontCover);
    }
}
} // namespace

unsigned int audiocore::largestPicture(const MediaFile& media)
{
    constexpr unsigned int inBlock = (16u * 1024 - 64) * 1024; // of what holds less than 16 MB
    auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(media.file.get());
    auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(media.file.get());
    const TagLib::ID3v2::Tag* id3v2 = mpeg ? mpeg->ID3v2Tag() : wav ? wav->ID3v2Tag() : nullptr;
    if (media.format == AUDIO_FORMAT_FLAC || (id3v2 && id3v2->header()->majorVersion() == 2))
        return inBlock;
    if (dynamic_cast<const TagLib::Ogg::FLAC::File*>(media.file.get()))
        return inBlock / 4 * 3; // written with four characters for three bytes
    return largestShown;
}

void audiocore::readPictures(const MediaFile& media, TagContent& content)
{
    Choice choice;
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(media.file.get()))
        offerFlac(choice, flac->pictureList());
    if (auto* mp4 = dynamic_cast<Mp4File*>(media.file.get()))
        offerMp4(choice, *mp4);
    for (TagLib::Tag* tag : tagsOf(media)) {
        if (auto* id3v2 = dynamic_cast<TagLib::ID3v2::Tag*>(tag))
            offerId3v2(choice, *id3v2);
        else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(tag))
            offerFlac(choice, xiph->pictureList());
        else if (auto* ape = dynamic_cast<TagLib::APE::Tag*>(tag))
            offerApe(choice, *ape);
        else if (auto* asf = dynamic_cast<TagLib::ASF::Tag*>(tag))
            offerAsf(choice, *asf);
    }
    content.picture = choice.bytes();
    content.pictures = choice.count();
}

std::string audiocore::pictureType(const ByteVector& bytes)
{
    if (bytes.startsWith("\x89PNG"))
        return "image/png";
    if (bytes.startsWith("GIF8"))
        return "image/gif";
    if (bytes.startsWith("BM"))
        return "image/bmp";
    return bytes.mid(8, 4) == ByteVector("WEBP") ? "image/webp" : "image/jpeg";
}

ByteVector audiocore::flacPicture(const ByteVector& bytes)
{
    TagLib::FLAC::Picture picture;
    picture.setType(TagLib::FLAC::Picture::FrontCover);
    picture.setMimeType(pictureType(bytes));
    picture.setData(bytes);
    return picture.render();
}

void audiocore::setAsfPicture(TagLib::ASF::Tag& tag, const ByteVector& bytes)
{
    tag.removeItem("WM/Picture");
    if (bytes.isEmpty())
        return;
    TagLib::ASF::Picture picture;
    picture.setType(TagLib::ASF::Picture::FrontCover);
    picture.setMimeType(pictureType(bytes));
    picture.setPicture(bytes);
    tag.setAttribute("WM/Picture", picture);
}
