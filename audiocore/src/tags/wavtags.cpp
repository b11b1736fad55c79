// Tags of WAV: chunks with ID3v2 and with an INFO list.
#include "base/checkedmath.h"
#include "media/checkedstream.h"
#include "media/wavfile.h"
#include "tags/id3v2bytes.h"
#include "tags/id3v2frames.h"
#include "tags/infobytes.h"
#include "tags/soundview.h"
#include "tags/tagkind.h"
#include "tags/taglimits.h"
#include "tags/tagreading.h"
#include "tags/tagscreen.h"
#include "tags/tagtext.h"
#include "tags/tagwriting.h"

#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>

#include <algorithm>
#include <cstdint>
#include <optional>

using audiocore::CheckedStream;
using audiocore::FileEdits;
using audiocore::SoundView;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagReading;
using TagLib::ByteVector;

namespace {
class WavTags final : public audiocore::LibraryRead<audiocore::WavFile>
{
public:
    explicit WavTags(CheckedStream& stream) : LibraryRead(&stream, true) {}

    void read(TagReading& reading) override
    {
        reading.add(m_file.hasID3v2Tag() ? m_file.ID3v2Tag() : nullptr, [this] { return id3v2Bytes(); });
        reading.addTexts(m_file.hasInfoTag() ? m_file.InfoTag() : nullptr);
    }
    unsigned int largestPicture() override { return audiocore::largestPictureIn(m_file.ID3v2Tag()); }
    std::string write(const FileEdits& edits) override;

private:
    /// None without one, and nothing when that is more than we write of one tag.
    std::optional<ByteVector> id3v2Bytes()
    {
        const int chunk = m_file.id3v2Chunk();
        if (chunk < 0)
            return ByteVector();
        if (long(m_file.chunkDataSize(unsigned(chunk))) > audiocore::mostTagBytesWritten)
            return std::nullopt;
        return m_file.chunkData(unsigned(chunk));
    }
    void writeInfo(const FileEdits& edits)
    {
        const int chunk = m_file.infoChunk();
        if (chunk < 0)
            return;
        audiocore::InfoBytes info(m_file.chunkData(unsigned(chunk)));
        info.apply(edits.further);
        m_file.setChunkData(unsigned(chunk), info.render());
    }
    void writeId3v2(const ByteVector& bytes)
    {
        const int chunk = m_file.id3v2Chunk();
        if (chunk >= 0 && bytes.isEmpty())
            m_file.removeChunk(unsigned(chunk));
        else if (chunk >= 0)
            m_file.setChunkData(unsigned(chunk), bytes);
        else if (!bytes.isEmpty())
            m_file.setChunkData("ID3 ", bytes);
    }
};

std::string WavTags::write(const FileEdits& edits)
{
    if (m_file.length() > m_file.end())
        return "it goes on behind its last chunk, perhaps with sound";
    const std::optional<ByteVector> old = id3v2Bytes();
    if (!old)
        return audiocore::tooLarge;
    std::optional<audiocore::Id3v2Bytes> tag = audiocore::Id3v2Bytes::parse(*old);
    if (!tag)
        return audiocore::cannotBeKept;
    applyTo(*tag, edits, audiocore::TagRank::Own);
    const std::optional<ByteVector> bytes = tag->render(0);
    if (!bytes)
        return audiocore::tooLarge;
    writeInfo(edits);
    writeId3v2(*bytes);
    return std::string();
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

class WavScreen final : public audiocore::TagScreen
{
    void show(ByteVector& block, long position) override
    {
        if (audiocore::id3v2::viewOf(block).substr(0, 4) == "INFO")
            block = audiocore::InfoBytes::shown(block);
        else
            TagScreen::show(block, position);
    }
};

std::unique_ptr<TaggedFile> open(CheckedStream& stream, long, audiocore::Purpose)
{
    static const InfoText handler;
    static const bool installed = (TagLib::RIFF::Info::Tag::setStringHandler(&handler), true);
    static_cast<void>(installed);
    WavScreen screen;
    const audiocore::ScreenedReading screened(stream, screen);
    return std::make_unique<WavTags>(stream);
}

/// Where the sound is behind and no chunk follows, the file ends. Sound of no size goes on to the end.
bool hide(CheckedStream& stream, long audioBegin, SoundView& view)
{
    constexpr long riffHead = 12;
    constexpr long chunkHead = 8;
    long position = audioBegin + riffHead;
    bool soundIsBehind = false;
    for (;;) {
        const ByteVector head = stream.readAt(position, chunkHead);
        const auto printable = [](char c) { return c >= ' ' && c <= '~'; };
        if (long(head.size()) < chunkHead)
            return true;
        if (!std::all_of(head.begin(), head.begin() + 4, printable)) {
            if (soundIsBehind)
                view.endAt(position);
            return true;
        }
        const ByteVector name = head.mid(0, 4);
        if (name == "LIST" || name == "ID3 " || name == "id3 ")
            view.show(position, "JUNK");
        const unsigned int size = head.toUInt(4, false);
        soundIsBehind |= name == "data" && size > 0;
        position = long(base::checked::sum(position, chunkHead + std::int64_t(size) + (size & 1)));
    }
}
} // namespace

namespace audiocore {
extern const TagKind wavTags{open, hide};
} // namespace audiocore
