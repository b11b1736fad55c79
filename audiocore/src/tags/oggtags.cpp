// Tags of Ogg: the comment packet of Vorbis, Opus, FLAC or Speex.
#include "media/checkedstream.h"
#include "media/flacblock.h"
#include "media/oggsound.h"
#include "media/oggstream.h"
#include "tags/commentbytes.h"
#include "tags/musicplaces.h"
#include "tags/soundview.h"
#include "tags/tagkind.h"
#include "tags/taglimits.h"
#include "tags/tagreading.h"
#include "tags/tagwriting.h"

#include <taglib/oggfile.h>
#include <taglib/xiphcomment.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace flac = audiocore::flac;

using audiocore::CheckedStream;
using audiocore::CommentBytes;
using audiocore::FileEdits;
using audiocore::MpegStream;
using audiocore::OggCodec;
using audiocore::OggStream;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagReading;
using TagLib::ByteVector;

namespace {
/// The pages of a file, for writing alone: the library's own classes would read the tags once more.
class OggPages final : public TagLib::Ogg::File
{
public:
    explicit OggPages(TagLib::IOStream& stream) : TagLib::Ogg::File(&stream) {}
    TagLib::Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
};

/// What the packet of the comment begins with, if anything; null where the packets are FLAC's blocks.
const char* headOfComment(OggCodec codec)
{
    return codec == OggCodec::Vorbis ? "\x03vorbis"
           : codec == OggCodec::Opus ? "OpusTags"
           : codec == OggCodec::Flac ? nullptr
                                     : "";
}

/// The packet of a stream that carries the comment.
struct CommentPacket
{
    unsigned int index = 1;
    ByteVector head;
    ByteVector comment;
    bool isFlacBlock = false;

    /// The second one where it begins with that head; for null the first block that is a comment.
    static std::optional<CommentPacket> find(TagLib::Ogg::File& file, const char* head);
    /// False when the comment is too large or the tag library refuses.
    bool write(TagLib::Ogg::File& file);
};

std::optional<CommentPacket> CommentPacket::find(TagLib::Ogg::File& file, const char* head)
{
    constexpr unsigned int mostBlocks = 100;
    const auto isComment = [head](const ByteVector& packet) {
        return head ? *head == '\0' || packet.startsWith(head) : flac::kindOf(packet) == flac::Comment;
    };
    CommentPacket found;
    found.isFlacBlock = !head;
    ByteVector packet = file.packet(found.index);
    while (found.isFlacBlock && !packet.isEmpty() && !isComment(packet) && found.index < mostBlocks)
        packet = file.packet(++found.index);
    if (packet.isEmpty() || !isComment(packet))
        return std::nullopt;
    found.head = head ? ByteVector(head) : packet.mid(0, flac::headSize);
    found.comment = packet.mid(found.head.size());
    return found;
}

bool CommentPacket::write(TagLib::Ogg::File& file)
{
    if (isFlacBlock && comment.size() > flac::largestBlock)
        return false;
    if (isFlacBlock)
        head = flac::headOf(head.data()[0], comment.size());
    ByteVector packet = head;
    file.setPacket(index, packet.append(comment));
    return file.save();
}

class OggTags final : public TaggedFile
{
public:
    OggTags(CheckedStream& stream, std::vector<OggStream> streams, const OggStream& music)
        : m_stream(stream), m_streams(std::move(streams)), m_music(music),
          m_comment(audiocore::oggComment(stream, music, audiocore::mostTagBytes))
    {
    }

    bool isMusic() override { return m_comment || inFlac(); }
    MpegStream sound() override { return audiocore::measureOgg(m_stream, m_streams, m_music); }
    void read(TagReading& reading) override;
    unsigned int largestPicture() override
    {
        // A comment has four characters for three bytes of a picture.
        return inFlac() ? audiocore::largestPictureInBlock / 4 * 3 : audiocore::largestPicture;
    }
    std::string write(const FileEdits& edits) override;

private:
    bool inFlac() const { return m_music.codec == OggCodec::Flac; }

    CheckedStream& m_stream;
    const std::vector<OggStream> m_streams;
    const OggStream m_music;
    const std::optional<ByteVector> m_comment;
};

/// The library goes by the number of fields that a comment tells.
void OggTags::read(TagReading& reading)
{
    if (!m_comment)
        return;
    ByteVector comment = *m_comment;
    if (const std::optional<CommentBytes::Bound> bound = CommentBytes::boundOf(comment)) {
        comment = comment.mid(0, bound->end); // what is left out takes no memory once more
        bound->applyTo(comment);
    }
    TagLib::Ogg::XiphComment fields(comment);
    reading.add(&fields, [&comment] { return comment; });
}

std::string OggTags::write(const FileEdits& edits)
{
    if (m_streams.size() > 1)
        return "other streams lie between the pages of its music, and would be lost";
    // The library gathers the packet whatever its size.
    if (!audiocore::oggComment(m_stream, m_music, audiocore::mostTagBytesWritten))
        return audiocore::cannotBeKept;
    OggPages pages(m_stream);
    std::optional<CommentPacket> packet = CommentPacket::find(pages, headOfComment(m_music.codec));
    if (!packet)
        return audiocore::cannotBeKept;
    std::optional<CommentBytes> comment = CommentBytes::parse(packet->comment);
    if (!comment)
        return audiocore::cannotBeKept;
    comment->apply(edits.own);
    packet->comment = comment->render();
    return packet->write(pages) ? std::string() : audiocore::tooLarge;
}

std::unique_ptr<TaggedFile> openOgg(CheckedStream& stream, long audioBegin)
{
    std::vector<OggStream> streams = audiocore::oggStreams(stream, audioBegin);
    const OggStream* const music = audiocore::musicAmong(streams);
    if (!music)
        return nullptr;
    const OggStream found = *music;
    return std::make_unique<OggTags>(stream, std::move(streams), found);
}

/// Where the first length makes no sense, decoders see no fields either; they see no more than there are.
bool isOutOfBounds(const ByteVector& comment)
{
    if (comment.size() <= 8 || comment.toUInt(0u, false) >= comment.size())
        return false;
    const std::optional<CommentBytes::Bound> bound = CommentBytes::boundOf(comment);
    return bound && bound->end < comment.size();
}

/// Pages have checksums, so nothing can be shown otherwise: whether decoders may see the comments of all
/// streams as they are.
bool hideInOgg(CheckedStream& stream, long audioBegin, audiocore::SoundView&)
{
    const std::vector<OggStream> streams = audiocore::oggStreams(stream, audioBegin);
    return std::none_of(streams.begin(), streams.end(), [&stream](const OggStream& one) {
        const std::vector<ByteVector> comments =
            audiocore::possibleComments(stream, one, audiocore::mostTagBytes);
        return std::any_of(comments.begin(), comments.end(), isOutOfBounds);
    });
}

/// The pages themselves are counted, and so change with the size of the comment.
bool findInOgg(CheckedStream& stream, long audioBegin, long end, audiocore::MusicPlaces& places)
{
    const std::vector<OggStream> streams = audiocore::oggStreams(stream, audioBegin);
    const OggStream* const music = audiocore::musicAmong(streams);
    if (!music)
        return false;
    long position =
        audiocore::eachSetup(stream, *music, audiocore::mostTagBytes,
                             [&places](long begin, long size) { places.add(begin, begin + size); });
    const std::int64_t setup = places.bytes();
    while (const std::optional<audiocore::OggPage> page = audiocore::OggPage::at(stream, position)) {
        places.add(page->body, page->end);
        position = page->end;
    }
    places.add(position, end);
    return places.bytes() > setup;
}
} // namespace

namespace audiocore {
extern const TagKind oggTags{openOgg, hideInOgg, findInOgg};
} // namespace audiocore
