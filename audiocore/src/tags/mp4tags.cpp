// Tags of MP4: lists of items, and plain texts.
#include "media/checkedstream.h"
#include "tags/mp4file.h"
#include "tags/mp4writing.h"
#include "tags/tagkind.h"
#include "tags/tagreading.h"
#include "tags/tagwriting.h"

using audiocore::CheckedStream;
using audiocore::FileEdits;
using audiocore::MpegStream;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagReading;

namespace {
class Mp4Tags final : public TaggedFile
{
public:
    explicit Mp4Tags(CheckedStream& stream) : m_file(stream) {}

    bool isMusic() override { return m_file.isValid(); }
    MpegStream sound() override { return m_file.sound(); }
    void read(TagReading& reading) override
    {
        reading.addTexts([this](int type) { return m_file.texts(type); });
        // The first picture; the others are not read.
        audiocore::PictureChoice& choice = reading.pictures();
        for (const audiocore::Mp4Value& picture : m_file.pictures()) {
            if (choice.bytes().isEmpty() && picture.size > 0 && picture.size <= audiocore::largestPicture)
                choice.offer(m_file.bytesOf(picture), false);
            else if (picture.size > 0)
                choice.passOver();
        }
    }
    unsigned int largestPicture() override { return audiocore::largestPicture; }
    std::string write(const FileEdits& edits) override { return writeMp4(m_file, edits); }

private:
    audiocore::Mp4File m_file;
};

/// Our own walk has bounds of its own: it needs no screen.
std::unique_ptr<TaggedFile> openMp4(CheckedStream& stream, long)
{
    stream.seek(0);
    return std::make_unique<Mp4Tags>(stream);
}

/// Its tags need no hiding, but decoders walk as well: they see what our own walk comes to the end of.
bool hideInMp4(CheckedStream& stream, long, audiocore::SoundView&)
{
    stream.seek(0);
    return audiocore::Mp4File(stream).isBounded();
}
} // namespace

namespace audiocore {
extern const TagKind mp4Tags{openMp4, hideInMp4};
} // namespace audiocore
