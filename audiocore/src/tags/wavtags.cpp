// Tags of WAV: chunks with ID3v2 and with an INFO list.
#include "media/checkedstream.h"
#include "media/wavchunks.h"
#include "media/wavsound.h"
#include "tags/id3v2bytes.h"
#include "tags/id3v2frames.h"
#include "tags/infobytes.h"
#include "tags/musicplaces.h"
#include "tags/pictures.h"
#include "tags/soundview.h"
#include "tags/tagkind.h"
#include "tags/taglimits.h"
#include "tags/tagreading.h"
#include "tags/tagscreen.h"
#include "tags/tagsource.h"
#include "tags/tagtext.h"
#include "tags/tagwriting.h"

#include <taglib/id3v2tag.h>
#include <taglib/infotag.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using audiocore::CheckedStream;
using audiocore::FileEdits;
using audiocore::Id3v2Bytes;
using audiocore::InfoBytes;
using audiocore::MpegStream;
using audiocore::SoundView;
using audiocore::StreamOffset;
using audiocore::StreamSize;
using audiocore::StreamStart;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagReading;
using audiocore::WavChunk;
using audiocore::WavChunks;
using TagLib::ByteVector;

namespace {
/// Bytes that take the place of others.
struct Splice
{
    std::int64_t begin;
    std::int64_t size;
    ByteVector bytes;
};

class WavTags final : public TaggedFile
{
public:
    WavTags(CheckedStream& stream, std::int64_t begin);

    bool isMusic() override { return m_sound.sampleRate > 0; }
    MpegStream sound() override { return m_sound; }
    void read(TagReading& reading) override;
    unsigned int largestPicture() override { return audiocore::largestPictureIn(m_id3v2.get()); }
    std::string write(const FileEdits& edits) override;

private:
    const WavChunk* id3v2Chunk() const { return m_chunks.find({"ID3 ", "id3 "}); }
    const WavChunk* infoChunk() const;
    std::unique_ptr<TagLib::ID3v2::Tag> id3v2In(std::int64_t begin, std::int64_t end);
    std::optional<ByteVector> bytesOf(const WavChunk* chunk) const;
    const char* whyItStays() const;
    Splice replaced(const WavChunk* old, const char* name, const ByteVector& bytes) const;
    std::string apply(std::vector<Splice> splices);

    CheckedStream& m_stream;
    const std::int64_t m_begin;
    const WavChunks m_chunks;
    const MpegStream m_sound;
    audiocore::TagSource m_source;
    std::unique_ptr<TagLib::ID3v2::Tag> m_id3v2;
    std::unique_ptr<TagLib::ID3v2::Tag> m_front; ///< before the file proper, where none is to be
};

WavTags::WavTags(CheckedStream& stream, std::int64_t begin)
    : m_stream(stream), m_begin(begin), m_chunks(stream, begin), m_sound(measureWav(stream, m_chunks)),
      m_source(stream)
{
    if (const WavChunk* const chunk = id3v2Chunk())
        m_id3v2 = id3v2In(chunk->begin, chunk->begin + chunk->size);
    if (begin > 0)
        m_front = id3v2In(0, begin);
}

std::unique_ptr<TagLib::ID3v2::Tag> WavTags::id3v2In(std::int64_t begin, std::int64_t end)
{
    if (m_stream.readAt(StreamOffset(begin), 3) != "ID3")
        return nullptr;
    audiocore::TagScreen screen{long(end)};
    const audiocore::ScreenedReading screened(m_stream, screen);
    return std::make_unique<TagLib::ID3v2::Tag>(&m_source, StreamOffset(begin));
}

/// The first list of this kind.
const WavChunk* WavTags::infoChunk() const
{
    const auto& all = m_chunks.all();
    const auto chunk = std::find_if(all.begin(), all.end(), [this](const WavChunk& one) {
        return one.name == "LIST" && one.isWhole && one.size >= 4 &&
               m_stream.readAt(StreamOffset(one.begin), 4) == "INFO";
    });
    return chunk == all.end() ? nullptr : &*chunk;
}

/// None without a chunk, and nothing when that is more than we write of one tag.
std::optional<ByteVector> WavTags::bytesOf(const WavChunk* chunk) const
{
    if (!chunk)
        return ByteVector();
    if (chunk->size > audiocore::mostTagBytesWritten)
        return std::nullopt;
    return m_stream.readAt(StreamOffset(chunk->begin), StreamSize(chunk->size));
}

void WavTags::read(TagReading& reading)
{
    reading.add(m_id3v2.get(), [this] { return bytesOf(id3v2Chunk()); });
    const WavChunk* const list = infoChunk();
    if (list && list->size <= audiocore::mostTagBytes) {
        const TagLib::RIFF::Info::Tag info(InfoBytes::shown(bytesOf(list).value_or(ByteVector())));
        reading.addTexts(&info);
    }
    reading.add(m_front.get(), [] { return std::nullopt; });
}

/// Why nothing is written into the file; null where something may be.
const char* WavTags::whyItStays() const
{
    if (m_begin > 0)
        return "a tag stands before its beginning";
    if (m_chunks.isLong())
        return "it is of the kind for more than 4 GB, which is only read";
    if (!m_chunks.soundHasSize())
        return "it does not tell how much sound it has";
    if (m_stream.length() > m_chunks.end())
        return "it goes on behind its last chunk, perhaps with sound";
    return nullptr;
}

std::string WavTags::write(const FileEdits& edits)
{
    if (const char* const reason = whyItStays())
        return reason;
    const std::optional<ByteVector> oldTag = bytesOf(id3v2Chunk());
    const std::optional<ByteVector> oldList = bytesOf(infoChunk());
    if (!oldTag || !oldList)
        return audiocore::tooLarge;
    std::optional<Id3v2Bytes> tag = Id3v2Bytes::parse(*oldTag);
    if (!tag)
        return audiocore::cannotBeKept;
    applyTo(*tag, edits, audiocore::TagRank::Own);
    const std::optional<ByteVector> newTag = tag->render(0);
    if (!newTag)
        return audiocore::tooLarge;
    std::vector<Splice> splices{replaced(id3v2Chunk(), "ID3 ", *newTag)};
    if (const WavChunk* const chunk = infoChunk()) {
        InfoBytes list(*oldList);
        list.apply(edits.further);
        splices.push_back(replaced(chunk, "LIST", list.render()));
    }
    return apply(std::move(splices));
}

/// The chunk with other bytes: none where there are none, and at the end where there was none.
Splice WavTags::replaced(const WavChunk* old, const char* name, const ByteVector& bytes) const
{
    Splice splice{m_chunks.end(), 0, ByteVector()};
    if (old)
        splice = {old->headBegin(), old->end - old->headBegin(), ByteVector()};
    if (bytes.isEmpty())
        return splice;
    const WavChunk& last = m_chunks.all().back();
    if (!old && last.size % 2 != 0 && last.end == last.begin + last.size)
        splice.bytes.append('\0'); // nobody filled the last one up
    splice.bytes.append(old ? old->name : ByteVector(name));
    splice.bytes.append(ByteVector::fromUInt(bytes.size(), false));
    splice.bytes.append(bytes);
    if (bytes.size() % 2 != 0)
        splice.bytes.append('\0');
    return splice;
}

std::string WavTags::apply(std::vector<Splice> splices)
{
    constexpr std::int64_t headSize = 8;
    constexpr std::int64_t sizePlace = 4;
    constexpr std::int64_t most = 0xFFFFFFFF;
    // From the end on, so that places stay what they are.
    std::sort(splices.begin(), splices.end(),
              [](const Splice& a, const Splice& b) { return a.begin > b.begin; });
    for (const Splice& splice : splices)
        m_stream.insert(splice.bytes, StreamStart(splice.begin), StreamSize(splice.size));
    const std::int64_t size = m_stream.length() - headSize;
    if (size > most)
        return audiocore::tooLarge;
    m_stream.seek(StreamOffset(sizePlace));
    m_stream.writeBlock(ByteVector::fromUInt(static_cast<unsigned int>(size), false));
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

std::unique_ptr<TaggedFile> openWav(CheckedStream& stream, long audioBegin)
{
    static const InfoText handler;
    static const bool installed = (TagLib::RIFF::Info::Tag::setStringHandler(&handler), true);
    static_cast<void>(installed);
    return std::make_unique<WavTags>(stream, audioBegin);
}

/// Where the sound is behind and no chunk follows, the file ends.
bool hideInWav(CheckedStream& stream, long audioBegin, SoundView& view)
{
    const WavChunks chunks(stream, audioBegin);
    for (const WavChunk& chunk : chunks.all())
        if (chunk.name == "LIST" || chunk.name == "ID3 " || chunk.name == "id3 ")
            view.show(chunk.headBegin(), "JUNK");
    const bool isCut = !chunks.all().empty() && !chunks.all().back().isWhole;
    const WavChunk* const sound = chunks.sound();
    if (sound && sound->size > 0 && !isCut && stream.length() - chunks.end() >= WavChunk::headSize)
        view.endAt(chunks.end());
    return chunks.all().size() < WavChunks::most;
}

bool findInWav(CheckedStream& stream, long audioBegin, long, audiocore::MusicPlaces& places)
{
    const WavChunks chunks(stream, audioBegin);
    const WavChunk* const kind = chunks.find({"fmt "});
    const WavChunk* const sound = chunks.sound();
    if (!kind || !sound || sound->size == 0 || chunks.all().size() >= WavChunks::most)
        return false;
    for (const WavChunk* const chunk : {kind, sound})
        places.add(chunk->begin, chunk->begin + chunk->size);
    return true;
}
} // namespace

namespace audiocore {
extern const TagKind wavTags{openWav, hideInWav, findInWav};
} // namespace audiocore
