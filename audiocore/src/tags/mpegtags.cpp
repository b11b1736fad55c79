// Tags of raw MPEG audio, which is MP3 and AAC: ID3v2 in front, APE and ID3v1 behind.
#include "media/checkedstream.h"
#include "media/taglibtypes.h"
#include "tags/tagkind.h"
#include "tags/tagreading.h"
#include "tags/tagscreen.h"
#include "tags/tagsource.h"
#include "tags/tagwriting.h"

#include <taglib/apetag.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>

#include <algorithm>

using audiocore::CheckedStream;
using audiocore::FileEdits;
using audiocore::MpegStream;
using audiocore::Place;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagRank;
using audiocore::TagReading;
using TagLib::ByteVector;

namespace {
/// Our own walk over the frames; the library's would guess.
using Measure = MpegStream (*)(TagLib::IOStream& stream, long begin);

class MpegTags final : public audiocore::LibraryRead<audiocore::FileWithId3v2<TagLib::MPEG::File>>
{
public:
    MpegTags(CheckedStream& stream, long audioBegin, Measure measure)
        : LibraryRead(&stream, false), m_stream(stream), m_audioBegin(audioBegin), m_measure(measure)
    {
    }

    bool isMusic() override { return m_file.isValid(); }
    MpegStream sound() override { return m_measure(m_stream, m_audioBegin); }
    void read(TagReading& reading) override
    {
        reading.add(m_file.hasID3v2Tag() ? m_file.ID3v2Tag() : nullptr,
                    [this] { return audiocore::bytesAt(m_file, front()); });
        reading.add(m_file.hasAPETag() ? m_file.APETag() : nullptr,
                    [this] { return audiocore::bytesAt(m_file, audiocore::findApe(m_file)); });
        reading.addTexts(m_file.hasID3v1Tag() ? m_file.ID3v1Tag() : nullptr);
    }
    unsigned int largestPicture() override { return audiocore::largestPictureIn(m_file.ID3v2Tag()); }
    std::string write(const FileEdits& edits) override
    {
        writeId3v1(m_file, edits);
        const std::string error = writeApe(m_file, edits, TagRank::Further);
        return error.empty() ? writeFront(m_file, front(), edits, TagRank::Own) : error;
    }

private:
    Place front()
    {
        const Place place = audiocore::findId3v2(m_file);
        // Behind some rubbish.
        return place.size == 0 && m_file.hasID3v2Tag()
                   ? audiocore::findId3v2(m_file, std::max(long(m_file.find("ID3")), 0L))
                   : place;
    }

    CheckedStream& m_stream;
    const long m_audioBegin;
    const Measure m_measure;
};

/// Raw AAC without a tag at either end: the tag library would search it from one end to the other for one,
/// and take what looks like it between the frames.
class Untagged final : public TaggedFile
{
public:
    Untagged(CheckedStream& stream, long audioBegin) : m_stream(stream), m_audioBegin(audioBegin) {}

    bool isMusic() override { return true; }
    MpegStream sound() override { return audiocore::measureAdts(m_stream, m_audioBegin); }
    void read(TagReading&) override {}
    unsigned int largestPicture() override { return audiocore::largestPicture; }
    std::string write(const FileEdits& edits) override
    {
        audiocore::TagSource source(m_stream);
        return writeFront(source, Place(), edits, TagRank::Own);
    }

private:
    CheckedStream& m_stream;
    const long m_audioBegin;
};

/// Whether there is one at the file's beginning or its end.
bool hasTag(CheckedStream& stream, long audioBegin)
{
    constexpr long id3v1Size = 128;
    constexpr long apeFooterSize = 32;
    if (audioBegin > 0)
        return true;
    const ByteVector end = stream.readAt(std::max(0L, long(stream.length()) - id3v1Size - apeFooterSize),
                                         id3v1Size + apeFooterSize);
    const auto at = [&end](long fromEnd, const char* magic) {
        return long(end.size()) >= fromEnd && end.containsAt(magic, unsigned(long(end.size()) - fromEnd));
    };
    return at(id3v1Size, "TAG") || at(apeFooterSize, "APETAGEX") || at(id3v1Size + apeFooterSize, "APETAGEX");
}

std::unique_ptr<TaggedFile> open(CheckedStream& stream, long audioBegin, Measure measure)
{
    audiocore::TagScreen screen;
    const audiocore::ScreenedReading screened(stream, screen);
    return std::make_unique<MpegTags>(stream, audioBegin, measure);
}

std::unique_ptr<TaggedFile> openMp3(CheckedStream& stream, long audioBegin)
{
    return open(stream, audioBegin, audiocore::measureMp3);
}

std::unique_ptr<TaggedFile> openAdts(CheckedStream& stream, long audioBegin)
{
    if (!hasTag(stream, audioBegin))
        return std::make_unique<Untagged>(stream, audioBegin);
    return open(stream, audioBegin, audiocore::measureAdts);
}
} // namespace

namespace audiocore {
extern const TagKind mp3Tags{openMp3, nullptr, nullptr};
extern const TagKind adtsTags{openAdts, nullptr, nullptr};
} // namespace audiocore
