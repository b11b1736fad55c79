#include "tags/mediafile.h"

#include "media/checkedstream.h"
#include "media/formats.h"
#include "media/mpegframes.h"
#include "media/wavfile.h"
#include "tags/id3v2frames.h"
#include "tags/mp4file.h"
#include "tags/tagscreen.h"
#include "tags/tagtext.h"

#include <taglib/apefile.h>
#include <taglib/apetag.h>
#include <taglib/asffile.h>
#include <taglib/flacfile.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/id3v2header.h>
#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>
#include <taglib/mpegfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/opusfile.h>
#include <taglib/vorbisfile.h>
#include <taglib/xiphcomment.h>

#include <algorithm>

namespace id3v2 = audiocore::id3v2;

using audiocore::MediaFile;
using TagLib::ByteVector;
using TagLib::IOStream;

namespace {
constexpr long syncSearch = 64 * 1024;
constexpr unsigned int headSize = 64;

ByteVector headAt(IOStream& stream, long position)
{
    stream.seek(position);
    return stream.readBlock(headSize);
}

/// Where the file goes on behind the ID3v2 tags at its beginning.
long behindId3v2(IOStream& stream)
{
    constexpr int mostTags = 8;
    long position = 0;
    for (int tags = 0; tags < mostTags; ++tags) {
        stream.seek(position);
        const ByteVector header = stream.readBlock(id3v2::headerSize);
        const std::optional<id3v2::TagSize> size = id3v2::sizeOfTag(id3v2::viewOf(header));
        if (!size)
            break;
        position += long(size->whole());
    }
    return position;
}

/// MPEG audio has no magic number: two frames in a row tell, first right here, then behind some rubbish.
AudioFormat formatByFrames(IOStream& stream, long begin)
{
    if (audiocore::findsAdts(stream, begin, 1))
        return AUDIO_FORMAT_AAC;
    if (audiocore::findsMp3(stream, begin, 1) || audiocore::findsMp3(stream, begin, syncSearch))
        return AUDIO_FORMAT_MP3;
    return audiocore::findsAdts(stream, begin, syncSearch) ? AUDIO_FORMAT_AAC : AUDIO_FORMAT_UNKNOWN;
}

/// Whether MPEG audio has a tag at its beginning or its end.
bool hasTag(IOStream& stream, long audioBegin)
{
    constexpr long id3v1Size = 128;
    constexpr long apeFooterSize = 32;
    if (audioBegin > 0)
        return true;
    const ByteVector end = [&stream] {
        stream.seek(std::max(0L, long(stream.length()) - id3v1Size - apeFooterSize));
        return stream.readBlock(id3v1Size + apeFooterSize);
    }();
    const auto at = [&end](long fromEnd, const char* magic) {
        return long(end.size()) >= fromEnd && end.containsAt(magic, unsigned(long(end.size()) - fromEnd));
    };
    return at(id3v1Size, "TAG") || at(apeFooterSize, "APETAGEX") || at(id3v1Size + apeFooterSize, "APETAGEX");
}

std::unique_ptr<TagLib::File> oggFile(IOStream& stream, const ByteVector& head)
{
    if (head.find("OpusHead") >= 0)
        return std::make_unique<TagLib::Ogg::Opus::File>(&stream, true);
    if (head.find("\x7F"
                  "FLAC") >= 0)
        return std::make_unique<TagLib::Ogg::FLAC::File>(&stream, true);
    if (head.find("vorbis") >= 0)
        return std::make_unique<TagLib::Ogg::Vorbis::File>(&stream, true);
    return nullptr;
}

/// The chunk names no encoding; the library would take it for UTF-8 and make nothing of anything else.
class InfoText : public TagLib::RIFF::Info::StringHandler
{
public:
    TagLib::String parse(const ByteVector& bytes) const override
    {
        return TagLib::String(audiocore::readableText(bytes), TagLib::String::UTF8);
    }
};

std::unique_ptr<TagLib::File> wavFile(IOStream& stream)
{
    static const InfoText handler;
    static const bool installed = (TagLib::RIFF::Info::Tag::setStringHandler(&handler), true);
    static_cast<void>(installed);
    return std::make_unique<audiocore::WavFile>(&stream, true);
}

std::unique_ptr<TagLib::File> fileOf(AudioFormat format, IOStream& stream, const ByteVector& head)
{
    TagLib::ID3v2::FrameFactory* factory = TagLib::ID3v2::FrameFactory::instance();
    switch (format) {
    case AUDIO_FORMAT_WAV:
        return wavFile(stream);
    case AUDIO_FORMAT_WMA:
        return std::make_unique<TagLib::ASF::File>(&stream, true);
    case AUDIO_FORMAT_M4A:
        return std::make_unique<audiocore::Mp4File>(stream);
    case AUDIO_FORMAT_OGG:
        return oggFile(stream, head);
    case AUDIO_FORMAT_APE:
        return std::make_unique<TagLib::APE::File>(&stream, true);
    case AUDIO_FORMAT_FLAC:
        return std::make_unique<TagLib::FLAC::File>(&stream, factory, true);
    case AUDIO_FORMAT_MP3:
    case AUDIO_FORMAT_AAC:
        // Measured by our own walk over the frames: the library's would guess.
        return std::make_unique<TagLib::MPEG::File>(&stream, factory, false);
    default:
        return nullptr;
    }
}

void addIf(std::vector<TagLib::Tag*>& tags, bool there, TagLib::Tag* tag)
{
    if (there && tag)
        tags.push_back(tag);
}

/// The library reads all tags at once, and it is for this reading only that it gets them screened.
void openScreened(MediaFile& media, audiocore::Purpose purpose, const ByteVector& head)
{
    audiocore::CheckedStream& stream = *media.stream;
    audiocore::TagScreen screen(media.format, stream, media.audioBegin, purpose);
    if (media.format != AUDIO_FORMAT_M4A) // our own walk has bounds of its own
        stream.setScreen(&screen);
    const auto lift = [](audiocore::CheckedStream* screened) { screened->setScreen(nullptr); };
    const std::unique_ptr<audiocore::CheckedStream, decltype(lift)> lifted(&stream, lift);
    stream.seek(0);
    media.file = fileOf(media.format, stream, head);
    media.isWhole = screen.isWhole();
}
} // namespace

MediaFile audiocore::openMedia(CheckedStream& stream, Purpose purpose)
{
    MediaFile media;
    media.stream = &stream;
    media.audioBegin = behindId3v2(stream);
    const ByteVector head = headAt(stream, media.audioBegin);
    media.format = formatByMagic(id3v2::viewOf(head));
    const bool mpeg = media.format == AUDIO_FORMAT_UNKNOWN;
    if (mpeg)
        media.format = formatByFrames(stream, media.audioBegin);
    // The tag library would search raw AAC from one end to the other for a tag that is not there.
    if (media.format == AUDIO_FORMAT_AAC && purpose == Purpose::Reading && !hasTag(stream, media.audioBegin))
        return media;
    openScreened(media, purpose, head);
    const bool measuredByUs = mpeg || media.format == AUDIO_FORMAT_M4A;
    if (!media.file || !media.file->isValid() || (!measuredByUs && !media.file->audioProperties()))
        return MediaFile();
    return media;
}

std::vector<TagLib::Tag*> audiocore::tagsOf(const MediaFile& media)
{
    std::vector<TagLib::Tag*> tags;
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(media.file.get())) {
        addIf(tags, mpeg->hasID3v2Tag(), mpeg->ID3v2Tag());
        addIf(tags, mpeg->hasAPETag(), mpeg->APETag());
        addIf(tags, mpeg->hasID3v1Tag(), mpeg->ID3v1Tag());
    } else if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(media.file.get())) {
        addIf(tags, flac->hasXiphComment(), flac->xiphComment());
        addIf(tags, flac->hasID3v2Tag(), flac->ID3v2Tag());
        addIf(tags, flac->hasID3v1Tag(), flac->ID3v1Tag());
    } else if (auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(media.file.get())) {
        addIf(tags, wav->hasID3v2Tag(), wav->ID3v2Tag());
        addIf(tags, wav->hasInfoTag(), wav->InfoTag());
    } else if (auto* ape = dynamic_cast<TagLib::APE::File*>(media.file.get())) {
        addIf(tags, ape->hasAPETag(), ape->APETag());
        addIf(tags, ape->hasID3v1Tag(), ape->ID3v1Tag());
    } else if (media.file) {
        addIf(tags, true, media.file->tag());
    }
    return tags;
}
