#include "tags/lastway.h"

#include "base/module.h"
#include "media/checkedstream.h"
#include "media/formats.h"
#include "media/lastway.h"
#include "tags/pictures.h"
#include "tags/soundview.h"
#include "tags/taglimits.h"
#include "tags/tagreading.h"
#include "tags/tagtext.h"
#include "tags/tagwriting.h"

#include <algorithm>
#include <optional>
#include <utility>

using audiocore::CheckedStream;
using audiocore::FileEdits;
using audiocore::ForeignMedia;
using audiocore::LastWayDoor;
using audiocore::MpegStream;
using audiocore::SoundView;
using audiocore::TaggedFile;
using audiocore::TagReading;
using TagLib::ByteVector;
using TagLib::String;
using TagLib::StringList;

namespace {
base::Module module("melodrift-demux", "melodriftDemux", "reading files of unusual kinds");

/// A stream as decoders get to see it.
class ShownBytes final : public audiocore::ForeignBytes
{
public:
    ShownBytes(CheckedStream& stream, const SoundView& view) : m_stream(stream), m_view(view) {}

    std::int64_t size() const override { return m_view.shownOf(m_stream.length()); }
    bool isInterrupted() const noexcept override { return m_failed || m_stream.ranDry(); }
    std::size_t readAt(std::int64_t position, void* bytes, std::size_t count) noexcept override
    {
        const std::int64_t left = size() - position;
        if (isInterrupted() || left <= 0)
            return 0;
        try {
            const std::size_t most = std::size_t(std::min(std::int64_t(count), left));
            const ByteVector read = m_stream.readAt(long(position), most);
            std::copy(read.begin(), read.end(), static_cast<char*>(bytes));
            m_view.showIn(bytes, position, read.size());
            return read.size();
        } catch (const std::exception&) {
            m_failed = true; // nothing is thrown through what calls this
            return 0;
        }
    }

private:
    CheckedStream& m_stream;
    const SoundView& m_view;
    bool m_failed = false;
};

class ForeignFile final : public TaggedFile
{
public:
    explicit ForeignFile(ForeignMedia media) : m_media(std::move(media)) {}

    bool isMusic() override { return true; }
    MpegStream sound() override { return m_media.sound; }
    void read(TagReading& reading) override;
    unsigned int largestPicture() override { return audiocore::largestPicture; }
    std::string write(const FileEdits&) override { return "files of its kind can be read and not written"; }

private:
    const ForeignMedia m_media;
};

void ForeignFile::read(TagReading& reading)
{
    reading.addTexts([this](int type) {
        const ByteVector& text = m_media.texts.at(std::size_t(type));
        const bool isShown = !text.isEmpty() && text.size() <= audiocore::longestText;
        return isShown ? StringList(String(audiocore::readableText(text), String::UTF8)) : StringList();
    });
    for (const ForeignMedia::Picture& picture : m_media.pictures)
        reading.pictures().offer(picture.bytes, picture.isFront);
}
} // namespace

std::unique_ptr<TaggedFile> audiocore::openLastWay(CheckedStream& stream, const FormatRow& row)
{
    const std::optional<SoundView> view = SoundView::of(stream);
    if (!view)
        return nullptr;
    const auto* const door = static_cast<const LastWayDoor*>(module.opened());
    if (!door)
        return nullptr;
    ShownBytes bytes(stream, *view);
    ForeignMedia media;
    return door->read(bytes, row.demuxer, media) ? std::make_unique<ForeignFile>(std::move(media)) : nullptr;
}
