// Tags of Ogg: the comment packet of Vorbis, Opus or FLAC.
#include "base/checkedmath.h"
#include "media/checkedstream.h"
#include "media/flacblock.h"
#include "media/oggpacket.h"
#include "tags/commentbytes.h"
#include "tags/id3v2frames.h"
#include "tags/soundview.h"
#include "tags/tagkind.h"
#include "tags/taglimits.h"
#include "tags/tagreading.h"
#include "tags/tagscreen.h"
#include "tags/tagwriting.h"

#include <taglib/oggfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/oggpageheader.h>
#include <taglib/opusfile.h>
#include <taglib/vorbisfile.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace flac = audiocore::flac;

using audiocore::CheckedStream;
using audiocore::CommentBytes;
using audiocore::FileEdits;
using audiocore::MpegStream;
using audiocore::OggComment;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagReading;
using TagLib::ByteVector;

namespace {
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
        return head ? packet.startsWith(head) : flac::kindOf(packet) == flac::Comment;
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
    // The base's: the file's own one would write the comment anew from its own reading.
    return file.TagLib::Ogg::File::save();
}

/// Opened by the library's class for what the stream carries.
template <class File>
class OggTags final : public audiocore::LibraryRead<File>
{
public:
    /// `commentHead` is what the packet with the comment begins with; null where the packets are FLAC's
    /// blocks.
    OggTags(CheckedStream& stream, long audioBegin, const char* commentHead)
        : audiocore::LibraryRead<File>(&stream, true), m_stream(stream), m_audioBegin(audioBegin),
          m_commentHead(commentHead)
    {
    }

    MpegStream sound() override;
    void read(TagReading& reading) override
    {
        reading.add(m_file.tag(), [this] {
            const std::vector<OggComment> comments = oggComments(audiocore::mostTagBytes);
            return comments.empty() ? ByteVector() : comments.front().bytes;
        });
    }
    unsigned int largestPicture() override
    {
        // A comment has four characters for three bytes of a picture.
        return m_commentHead ? audiocore::largestPicture : audiocore::largestPictureInBlock / 4 * 3;
    }
    std::string write(const FileEdits& edits) override;

private:
    using audiocore::LibraryRead<File>::m_file;

    std::vector<OggComment> oggComments(long mostBytes)
    {
        return audiocore::oggComments(m_stream, m_audioBegin, mostBytes);
    }

    CheckedStream& m_stream;
    const long m_audioBegin;
    const char* const m_commentHead;
};

/// Headers may not know the length: then the last page does.
template <class File>
MpegStream OggTags<File>::sound()
{
    MpegStream sound = audiocore::LibraryRead<File>::sound();
    const TagLib::Ogg::PageHeader* page =
        sound.milliseconds <= 0 && sound.sampleRate > 0 ? m_file.lastPageHeader() : nullptr;
    if (!page)
        return sound;
    const auto samples = std::max<std::int64_t>(page->absoluteGranularPosition(), 0);
    sound.milliseconds = base::checked::scaled(samples, 1000, sound.sampleRate);
    sound.bitsPerSecond = base::checked::scaled(m_stream.length(), 8000, sound.milliseconds);
    return sound;
}

template <class File>
std::string OggTags<File>::write(const FileEdits& edits)
{
    // The library gathers the packet whatever its size.
    if (oggComments(audiocore::mostTagBytesWritten).empty())
        return audiocore::cannotBeKept;
    std::optional<CommentPacket> packet = CommentPacket::find(m_file, m_commentHead);
    if (!packet)
        return audiocore::cannotBeKept;
    std::optional<CommentBytes> comment = CommentBytes::parse(packet->comment);
    if (!comment)
        return audiocore::cannotBeKept;
    comment->apply(edits.own);
    packet->comment = comment->render();
    return packet->write(m_file) ? std::string() : audiocore::tooLarge;
}

/// The library goes by the number of fields that a comment tells.
class OggScreen final : public audiocore::TagScreen
{
public:
    OggScreen(CheckedStream& stream, long audioBegin)
    {
        constexpr long headersBesideComment = 1024 * 1024;
        for (const OggComment& comment :
             audiocore::oggComments(stream, firstPage(stream, audioBegin), audiocore::mostTagBytes)) {
            const std::optional<CommentBytes::Bound> bound = CommentBytes::boundOf(comment.bytes);
            if (!bound)
                continue;
            for (unsigned int i = 0; i < bound->bytes.size(); ++i)
                m_patches.emplace_back(comment.placeOf(bound->place + i), bound->bytes.data()[i]);
            limitRoom(long(bound->end) + headersBesideComment);
        }
    }

private:
    /// The library takes the first page that it comes upon, be it inside a tag before the music.
    static long firstPage(CheckedStream& stream, long audioBegin)
    {
        const auto before = static_cast<unsigned long>(std::min(audioBegin, audiocore::mostTagBytes));
        const int found = audioBegin > 0 ? stream.readAt(0, before).find("OggS") : -1;
        return found < 0 ? audioBegin : found;
    }
    void show(ByteVector& block, long position) override
    {
        for (const auto& [place, byte] : m_patches)
            if (place >= position && place < position + long(block.size()))
                block[int(place - position)] = byte;
        TagScreen::show(block, position);
    }

    std::vector<std::pair<long, char>> m_patches; ///< bytes that are shown otherwise, by their place
};

std::unique_ptr<TaggedFile> open(CheckedStream& stream, long audioBegin, audiocore::Purpose)
{
    constexpr unsigned long headSize = 64;
    const ByteVector head = stream.readAt(audioBegin, headSize);
    OggScreen screen(stream, audioBegin);
    const audiocore::ScreenedReading screened(stream, screen);
    if (head.find("OpusHead") >= 0)
        return std::make_unique<OggTags<TagLib::Ogg::Opus::File>>(stream, audioBegin, "OpusTags");
    if (head.find("\x7F"
                  "FLAC") >= 0)
        return std::make_unique<OggTags<TagLib::Ogg::FLAC::File>>(stream, audioBegin, nullptr);
    if (head.find("vorbis") >= 0)
        return std::make_unique<OggTags<TagLib::Vorbis::File>>(stream, audioBegin, "\x03vorbis");
    return nullptr;
}

/// Pages have checksums, so nothing can be shown otherwise: whether decoders may see the comments as they
/// are.
bool hide(CheckedStream& stream, long audioBegin, audiocore::SoundView&)
{
    const std::vector<OggComment> comments =
        audiocore::oggComments(stream, audioBegin, audiocore::mostTagBytes);
    return std::none_of(comments.begin(), comments.end(), [](const OggComment& comment) {
        // Where the first length makes no sense, they see no fields either.
        return comment.bytes.size() > 8 && comment.bytes.toUInt(0u, false) < comment.bytes.size() &&
               CommentBytes::boundOf(comment.bytes);
    });
}
} // namespace

namespace audiocore {
extern const TagKind oggTags{open, hide};
} // namespace audiocore
