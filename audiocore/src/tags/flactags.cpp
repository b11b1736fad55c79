// Tags of FLAC: blocks before the music, and further tags around.
#include "media/checkedstream.h"
#include "media/flacblock.h"
#include "media/taglibtypes.h"
#include "tags/commentbytes.h"
#include "tags/flacblocks.h"
#include "tags/musicplaces.h"
#include "tags/soundview.h"
#include "tags/tagkind.h"
#include "tags/taglimits.h"
#include "tags/tagreading.h"
#include "tags/tagscreen.h"
#include "tags/tagwriting.h"

#include <taglib/flacfile.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2tag.h>
#include <taglib/xiphcomment.h>

#include <functional>
#include <optional>

namespace flac = audiocore::flac;

using audiocore::CheckedStream;
using audiocore::FileEdits;
using audiocore::FlacBlocks;
using audiocore::SoundView;
using audiocore::TaggedFile;
using audiocore::TagKind;
using audiocore::TagRank;
using audiocore::TagReading;
using TagLib::ByteVector;

namespace {
class FlacTags final : public audiocore::LibraryRead<audiocore::FileWithId3v2<TagLib::FLAC::File>>
{
public:
    FlacTags(CheckedStream& stream, long audioBegin) : LibraryRead(&stream, true), m_audioBegin(audioBegin) {}

    void read(TagReading& reading) override
    {
        reading.addPictures(m_file.pictureList());
        reading.add(m_file.hasXiphComment() ? m_file.xiphComment() : nullptr,
                    [this] { return FlacBlocks::commentOnly(m_file, m_audioBegin); });
        reading.add(m_file.hasID3v2Tag() ? m_file.ID3v2Tag() : nullptr,
                    [this] { return audiocore::bytesAt(m_file, audiocore::findId3v2(m_file)); });
        reading.addTexts(m_file.hasID3v1Tag() ? m_file.ID3v1Tag() : nullptr);
    }
    unsigned int largestPicture() override { return audiocore::largestPictureInBlock; }
    std::string write(const FileEdits& edits) override;

private:
    const long m_audioBegin;
};

std::string FlacTags::write(const FileEdits& edits)
{
    std::optional<FlacBlocks> blocks = FlacBlocks::read(m_file, m_audioBegin);
    if (!blocks)
        return audiocore::cannotBeKept;
    std::optional<audiocore::CommentBytes> comment = audiocore::CommentBytes::parse(blocks->comment());
    if (!comment)
        return audiocore::cannotBeKept;
    applyTo(*comment, edits, TagRank::Own);
    if (edits.own.picture)
        comment->apply({{}, ByteVector()}); // such a file has blocks of its own for pictures
    blocks->setComment(comment->render());
    if (edits.own.picture)
        blocks->setPicture(edits.own.picture->isEmpty() ? ByteVector()
                                                        : audiocore::flacPicture(*edits.own.picture));
    if (!blocks->write(m_file))
        return audiocore::tooLarge;
    writeId3v1(m_file, edits);
    return writeFront(m_file, audiocore::findId3v2(m_file), edits, TagRank::Further);
}

/// Whether the texts that a picture begins with are as long as texts may be.
bool isPlainPicture(const ByteVector& bytes)
{
    constexpr unsigned int mimePlace = 4;
    const unsigned int mime = bytes.toUInt(mimePlace);
    if (bytes.size() < 32 || mime > audiocore::longestText)
        return false;
    const unsigned int descriptionPlace = mimePlace + 4 + mime;
    return bytes.size() >= descriptionPlace + 4 && bytes.toUInt(descriptionPlace) <= audiocore::longestText;
}

class FlacScreen final : public audiocore::TagScreen
{
    /// Blocks that we do not ask for are shown as padding, which the library does not keep.
    void show(ByteVector& block, long position) override
    {
        if (block.size() != flac::headSize) {
            TagScreen::show(block, position);
            return;
        }
        const int kind = flac::kindOf(block);
        const unsigned int size = flac::sizeOf(block);
        const bool asked = kind == flac::StreamInfo || kind == flac::Comment || kind == flac::Picture;
        m_shown = asked && long(size) <= room() ? kind : flac::Padding;
        if (m_shown != kind)
            block[0] = char(m_shown | (flac::isLast(block) ? flac::lastBlock : 0));
        expect({position + long(flac::headSize), size},
               [this](CheckedStream& stream, const Piece& body) { return readBody(stream, body); });
    }
    /// The library takes a block of another size than its head says for the end of the file.
    ByteVector readBody(CheckedStream& stream, const Piece& body)
    {
        const long end = body.position + long(body.length);
        if (m_shown != flac::Padding || end > stream.length())
            return readAsked(stream, body);
        stream.seek(end);
        return ByteVector(static_cast<unsigned int>(body.length), '\0');
    }
    ByteVector readAsked(CheckedStream& stream, const Piece& body)
    {
        ByteVector block = readPlain(stream, body.length);
        if (m_shown == flac::Comment)
            audiocore::CommentBytes::boundFields(block);
        if (m_shown == flac::Picture && !isPlainPicture(block))
            block = ByteVector(block.size(), '\0');
        return block;
    }

    int m_shown = flac::Padding; ///< the kind that the block has whose body is expected
};

std::unique_ptr<TaggedFile> openFlac(CheckedStream& stream, long audioBegin)
{
    FlacScreen screen;
    const audiocore::ScreenedReading screened(stream, screen);
    return std::make_unique<FlacTags>(stream, audioBegin);
}

/// Tells of the heads of all blocks. Where the music begins; nothing where the file ends before.
std::optional<long> eachBlock(CheckedStream& stream, long audioBegin,
                              const std::function<void(long position, const ByteVector& head)>& tell)
{
    long position = audioBegin + 4;
    for (bool last = false; !last;) {
        const ByteVector head = stream.readAt(position, flac::headSize);
        if (head.size() < flac::headSize)
            return std::nullopt;
        last = flac::isLast(head);
        tell(position, head);
        position += long(flac::headSize + flac::sizeOf(head));
    }
    return position;
}

/// All blocks but the one that describes the stream look like padding.
bool hideInFlac(CheckedStream& stream, long audioBegin, SoundView& view)
{
    eachBlock(stream, audioBegin, [&view](long position, const ByteVector& head) {
        const char shown = char(flac::Padding | (flac::isLast(head) ? flac::lastBlock : 0));
        if (flac::kindOf(head) != flac::StreamInfo)
            view.show(position, {&shown, 1});
    });
    return true;
}

/// What else describes the stream, its length and checksum, not every encoder knows.
bool findInFlac(CheckedStream& stream, long audioBegin, long end, audiocore::MusicPlaces& places)
{
    const auto music = eachBlock(stream, audioBegin, [&places](long position, const ByteVector& head) {
        if (flac::kindOf(head) == flac::StreamInfo) {
            const long rates = position + long(flac::headSize + flac::ratesPlace);
            places.add(rates, rates + long(flac::ratesSize));
        }
    });
    if (!music || *music >= end)
        return false;
    places.add(*music, end);
    return true;
}
} // namespace

namespace audiocore {
extern const TagKind flacTags{openFlac, hideInFlac, findInFlac};
} // namespace audiocore
