// Tags of MP4: lists of items, and plain texts.
#include "media/checkedstream.h"
#include "media/mp4atoms.h"
#include "tags/mp4file.h"
#include "tags/mp4writing.h"
#include "tags/musicplaces.h"
#include "tags/tagkind.h"
#include "tags/tagreading.h"
#include "tags/tagsource.h"
#include "tags/tagwriting.h"

#include <string>
#include <vector>

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

/// Tables of places are left out: these change with the size of what stands before the media data.
bool findInMp4(CheckedStream& stream, long, long, audiocore::MusicPlaces& places)
{
    using Path = std::vector<std::string>;
    stream.seek(0);
    audiocore::TagSource source(stream);
    const audiocore::Mp4Atoms atoms(source, audiocore::Mp4Atoms::Fragments::Enter);
    const auto add = [&](const Path& path) {
        for (const audiocore::Mp4Atom* const atom : atoms.findAll(path))
            places.add(atom->content(), atom->end());
    };
    add({"mdat"});
    const bool hasMusic = places.bytes() > 0;
    for (const char* const table : {"stsd", "stts", "stsz", "stz2", "stsc"})
        add({"moov", "trak", "mdia", "minf", "stbl", table});
    add({"moof", "traf", "trun"});
    return hasMusic && atoms.areBounded();
}
} // namespace

namespace audiocore {
extern const TagKind mp4Tags{openMp4, hideInMp4, findInMp4};
} // namespace audiocore
