#include "tags/tagwriting.h"

#include "audiocore/tagitem.h"
#include "media/oggpacket.h"
#include "media/wavfile.h"
#include "tags/apebytes.h"
#include "tags/asfwriting.h"
#include "tags/commentbytes.h"
#include "tags/id3v2bytes.h"
#include "tags/infobytes.h"
#include "tags/mp4file.h"
#include "tags/mp4writing.h"
#include "tags/pictures.h"
#include "tags/taglimits.h"
#include "tags/tagplaces.h"
#include "tags/tagtext.h"

#include <taglib/apefile.h>
#include <taglib/asffile.h>
#include <taglib/flacfile.h>
#include <taglib/id3v1genres.h>
#include <taglib/mpegfile.h>
#include <taglib/oggfile.h>

using audiocore::TagContent;
using audiocore::TagEdits;
using TagLib::ByteVector;
using TagLib::String;

namespace {
const char* const cannotBeKept = "its tags hold something that could not be kept";
const char* const tooLarge = "its tags would be too large";

/// The edits for a format's own tag, and for the further tags that a file of it may have.
struct Edits
{
    TagEdits own;
    TagEdits ownNew; ///< where there is no own tag yet: it takes over what the others say
    TagEdits further;
};

Edits editsFor(const TagEdits& edits, const TagContent& content)
{
    Edits all{edits, edits, edits};
    for (size_t type = 0; type < size_t(audiocore::textTypes); ++type)
        if (!edits.texts[type] && !content.texts[type].empty())
            all.ownNew.texts[type] = content.texts[type];
    // One picture is enough.
    if (edits.picture)
        all.further.picture = ByteVector();
    return all;
}

/// A further tag is edited where there is one, and never made.
template <class Bytes>
void applyTo(Bytes& tag, const Edits& edits, bool own)
{
    if (own)
        tag.apply(tag.isEmpty() ? edits.ownNew : edits.own);
    else if (!tag.isEmpty())
        tag.apply(edits.further);
}

/// The tag at the file's beginning.
std::string writeFront(TagLib::File& file, const Edits& edits, bool own)
{
    const audiocore::Place place = audiocore::findId3v2(file);
    const std::optional<ByteVector> old = bytesAt(file, place);
    if (!old)
        return tooLarge;
    std::optional<audiocore::Id3v2Bytes> tag = audiocore::Id3v2Bytes::parse(*old);
    if (!tag)
        return cannotBeKept;
    applyTo(*tag, edits, own);
    const std::optional<ByteVector> bytes = tag->render(unsigned(place.size));
    if (!bytes)
        return tooLarge;
    putAt(file, place, *bytes);
    return std::string();
}

/// The APE tag near the file's end.
std::string writeApe(TagLib::File& file, const Edits& edits, bool own)
{
    const audiocore::Place place = audiocore::findApe(file);
    const std::optional<ByteVector> old = bytesAt(file, place);
    if (!old)
        return tooLarge;
    std::optional<audiocore::ApeBytes> tag = audiocore::ApeBytes::parse(*old);
    if (!tag)
        return cannotBeKept;
    applyTo(*tag, edits, own);
    putAt(file, place, tag->render());
    return std::string();
}

void writeOver(ByteVector& tag, unsigned int begin, unsigned int size, const std::string& text)
{
    const String value(text, String::UTF8);
    ByteVector bytes = value.isLatin1() ? value.data(String::Latin1) : ByteVector();
    bytes.resize(size, '\0');
    std::copy(bytes.begin(), bytes.end(), tag.data() + begin);
}

/// The tag of fixed length at the very end.
void writeId3v1(TagLib::File& file, const TagEdits& edits)
{
    constexpr unsigned int commentEnd = 125;
    constexpr unsigned int genre = 127;
    static constexpr struct
    {
        int type;
        unsigned int begin;
        unsigned int size;
    } texts[] = {{TAG_TITLE, 3, 30}, {TAG_ARTIST, 33, 30}, {TAG_ALBUM, 63, 30}, {TAG_YEAR, 93, 4}};

    const audiocore::Place place = audiocore::findId3v1(file);
    ByteVector tag = bytesAt(file, place).value_or(ByteVector());
    if (tag.isEmpty())
        return;
    for (const auto& text : texts)
        if (const auto& edit = edits.texts[size_t(text.type)])
            writeOver(tag, text.begin, text.size, *edit);
    if (const auto& edit = edits.texts[TAG_GENRE])
        tag[int(genre)] = char(TagLib::ID3v1::genreIndex(String(*edit, String::UTF8)));
    // A comment that is as long as can be leaves no room for a track.
    if (const auto& edit = edits.texts[TAG_TRACK]; edit && tag[int(commentEnd)] == 0) {
        const int track = edit->empty() ? 0 : std::stoi(edit->substr(0, 6));
        tag[int(commentEnd) + 1] = track < 256 ? char(track) : '\0';
    }
    putAt(file, place, tag);
}

std::string writeMpeg(TagLib::File& file, const Edits& edits)
{
    writeId3v1(file, edits.further);
    const std::string error = writeApe(file, edits, false);
    return error.empty() ? writeFront(file, edits, true) : error;
}

std::string writeMonkey(TagLib::File& file, const Edits& edits)
{
    writeId3v1(file, edits.further);
    return writeApe(file, edits, true);
}

std::string writeFlac(TagLib::File& file, long begin, const Edits& edits)
{
    std::optional<audiocore::FlacBlocks> blocks = audiocore::FlacBlocks::read(file, begin);
    if (!blocks)
        return cannotBeKept;
    std::optional<audiocore::CommentBytes> comment = audiocore::CommentBytes::parse(blocks->comment());
    if (!comment)
        return cannotBeKept;
    applyTo(*comment, edits, true);
    if (edits.own.picture)
        comment->apply({{}, ByteVector()}); // such a file has blocks of its own for pictures
    blocks->setComment(comment->render());
    if (edits.own.picture)
        blocks->setPicture(edits.own.picture->isEmpty() ? ByteVector()
                                                        : audiocore::flacPicture(*edits.own.picture));
    if (!blocks->write(file))
        return tooLarge;
    writeId3v1(file, edits.further);
    return writeFront(file, edits, false);
}

std::string writeOgg(TagLib::Ogg::File& file, const audiocore::MediaFile& media, const Edits& edits)
{
    // The library gathers the packet whatever its size.
    if (audiocore::oggComments(*media.stream, media.audioBegin, audiocore::mostTagBytesWritten).empty())
        return cannotBeKept;
    std::optional<audiocore::CommentPacket> packet = audiocore::CommentPacket::find(file);
    if (!packet)
        return cannotBeKept;
    std::optional<audiocore::CommentBytes> comment = audiocore::CommentBytes::parse(packet->comment);
    if (!comment)
        return cannotBeKept;
    comment->apply(edits.own);
    packet->comment = comment->render();
    return packet->write(file) ? std::string() : tooLarge;
}

std::string writeWav(audiocore::WavFile& file, const Edits& edits)
{
    if (file.length() > file.end())
        return "it goes on behind its last chunk, perhaps with sound";
    const std::optional<ByteVector> old = audiocore::id3v2Bytes(file);
    if (!old)
        return tooLarge;
    std::optional<audiocore::Id3v2Bytes> tag = audiocore::Id3v2Bytes::parse(*old);
    if (!tag)
        return cannotBeKept;
    applyTo(*tag, edits, true);
    const std::optional<ByteVector> bytes = tag->render(0);
    if (!bytes)
        return tooLarge;
    if (const int chunk = file.infoChunk(); chunk >= 0) {
        audiocore::InfoBytes info(file.chunkData(unsigned(chunk)));
        info.apply(edits.further);
        file.setChunkData(unsigned(chunk), info.render());
    }
    const int chunk = file.id3v2Chunk();
    if (chunk >= 0 && bytes->isEmpty())
        file.removeChunk(unsigned(chunk));
    else if (chunk >= 0)
        file.setChunkData(unsigned(chunk), *bytes);
    else if (!bytes->isEmpty())
        file.setChunkData("ID3 ", *bytes);
    return std::string();
}
} // namespace

std::string audiocore::writeTags(const MediaFile& media, const TagEdits& edits)
{
    TagLib::File& file = *media.file;
    const Edits all = editsFor(edits, readTags(media));
    const char* const refused = "the tag cannot be written";
    if (dynamic_cast<TagLib::MPEG::File*>(&file))
        return writeMpeg(file, all);
    if (dynamic_cast<TagLib::APE::File*>(&file))
        return writeMonkey(file, all);
    if (dynamic_cast<TagLib::FLAC::File*>(&file))
        return writeFlac(file, media.audioBegin, all);
    if (auto* ogg = dynamic_cast<TagLib::Ogg::File*>(&file))
        return writeOgg(*ogg, media, all);
    if (auto* wav = dynamic_cast<WavFile*>(&file))
        return writeWav(*wav, all);
    if (auto* mp4 = dynamic_cast<Mp4File*>(&file))
        return writeMp4(*mp4, edits) ? std::string() : cannotBeKept;
    auto* asf = dynamic_cast<TagLib::ASF::File*>(&file);
    if (asf && !media.isWhole)
        return cannotBeKept;
    if (asf)
        return writeAsf(*asf, *media.stream, edits) ? std::string() : refused;
    return refused;
}
