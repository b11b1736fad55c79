// Tags of Monkey's Audio: APE, and ID3v1 behind it.
#include "tags/tagkind.h"
#include "tags/tagreading.h"
#include "tags/tagscreen.h"
#include "tags/tagwriting.h"

#include <taglib/apefile.h>
#include <taglib/apetag.h>
#include <taglib/id3v1tag.h>

using audiocore::CheckedStream;
using audiocore::FileEdits;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagRank;
using audiocore::TagReading;

namespace {
class ApeTags final : public audiocore::LibraryRead<TagLib::APE::File>
{
public:
    explicit ApeTags(CheckedStream& stream) : LibraryRead(&stream, true) {}

    void read(TagReading& reading) override
    {
        reading.add(m_file.hasAPETag() ? m_file.APETag() : nullptr,
                    [this] { return audiocore::bytesAt(m_file, audiocore::findApe(m_file)); });
        reading.addTexts(m_file.hasID3v1Tag() ? m_file.ID3v1Tag() : nullptr);
    }
    unsigned int largestPicture() override { return audiocore::largestPicture; }
    std::string write(const FileEdits& edits) override
    {
        writeId3v1(m_file, edits);
        return writeApe(m_file, edits, TagRank::Own);
    }
};

std::unique_ptr<TaggedFile> openApe(CheckedStream& stream, long)
{
    audiocore::TagScreen screen;
    const audiocore::ScreenedReading screened(stream, screen);
    return std::make_unique<ApeTags>(stream);
}
} // namespace

namespace audiocore {
extern const TagKind apeTags{openApe, nullptr, nullptr};
} // namespace audiocore
