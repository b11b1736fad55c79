#include "media/oggstream.h"

#include "media/checkedstream.h"
#include "media/flacblock.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace flac = audiocore::flac;

using audiocore::CheckedStream;
using audiocore::OggCodec;
using audiocore::OggPacket;
using audiocore::OggPackets;
using audiocore::OggPage;
using audiocore::OggStream;
using TagLib::ByteVector;

namespace {
struct Codec
{
    std::string_view magic;
    OggCodec codec;
    unsigned int size; ///< of the first packet, at least
};

constexpr Codec codecs[] = {{"\x01vorbis", OggCodec::Vorbis, 30},
                            {"OpusHead", OggCodec::Opus, 19},
                            {"\x7F"
                             "FLAC",
                             OggCodec::Flac, 51},
                            {"Speex   ", OggCodec::Speex, 72}};

OggCodec codecOf(const ByteVector& head)
{
    const std::string_view bytes(head.data(), head.size());
    const auto* const codec = std::find_if(std::begin(codecs), std::end(codecs), [bytes](const Codec& one) {
        return bytes.size() >= one.size && bytes.substr(0, one.magic.size()) == one.magic;
    });
    return codec == std::end(codecs) ? OggCodec::Other : codec->codec;
}

/// How many header packets there are behind the first one. Of FLAC the last one says so.
unsigned int headersOf(const OggStream& stream)
{
    constexpr unsigned int furtherPlace = 68;
    constexpr unsigned int most = 100;
    switch (stream.codec) {
    case OggCodec::Vorbis:
        return 2;
    case OggCodec::Flac:
        return most;
    case OggCodec::Speex:
        return 1 + std::min(stream.head.toUInt(furtherPlace, false), most);
    case OggCodec::Opus:
    case OggCodec::Other:
        break;
    }
    return 1;
}

constexpr unsigned int headOfPacket = 8;
/// In the first packet of FLAC, which has the block that describes the stream at its end.
constexpr unsigned int flacRatesPlace = 17 + flac::ratesPlace;

/// Whether a further block follows the one with this head in FLAC.
bool goesOn(const ByteVector& head)
{
    return head.size() == flac::headSize && !flac::isLast(head);
}

/// Where the comment begins of a stream that is not known as music.
unsigned int behindAnyHead(const ByteVector& beginning)
{
    const ByteVector heads[] = {"\x81theora",
                                "\x81"
                                "daala",
                                "\x03vorbis", "OVP80\x02 "};
    for (const ByteVector& head : heads)
        if (beginning.startsWith(head))
            return head.size();
    return 0;
}

/// Where the comment of a header packet begins; nothing for a packet that holds none.
std::optional<unsigned int> commentPlace(OggCodec codec, const ByteVector& beginning)
{
    const auto behind = [&beginning](const ByteVector& magic) {
        return beginning.startsWith(magic) ? std::optional(magic.size()) : std::nullopt;
    };
    switch (codec) {
    case OggCodec::Vorbis:
        return behind("\x03vorbis");
    case OggCodec::Opus:
        return behind("OpusTags");
    case OggCodec::Flac:
        return beginning.size() >= flac::headSize && flac::kindOf(beginning) == flac::Comment
                   ? std::optional(flac::headSize)
                   : std::nullopt;
    case OggCodec::Speex:
        return 0;
    case OggCodec::Other:
        break;
    }
    return std::nullopt;
}
} // namespace

std::int32_t OggStream::sampleRate() const
{
    constexpr std::int32_t opusRate = 48000;
    switch (codec) {
    case OggCodec::Vorbis:
        return std::int32_t(head.toUInt(12u, false));
    case OggCodec::Opus:
        return opusRate;
    case OggCodec::Flac:
        return std::int32_t(head.toUInt(flacRatesPlace) >> 12); // 20 bits
    case OggCodec::Speex:
        return std::int32_t(head.toUInt(36u, false));
    case OggCodec::Other:
        break;
    }
    return 0;
}

void OggStream::eachHeader(OggPackets& packets, long mostBytes,
                           const std::function<bool(const OggPacket&)>& take) const
{
    bool more = packets.next(mostBytes).has_value();
    for (unsigned int left = headersOf(*this); more && left > 0; --left) {
        const std::optional<OggPacket> packet = packets.next(mostBytes);
        if (!packet)
            return;
        mostBytes -= long(packet->size);
        more =
            take(*packet) && (codec != OggCodec::Flac || goesOn(packets.bytesOf(*packet, 0, flac::headSize)));
    }
}

std::vector<OggStream> audiocore::oggStreams(CheckedStream& stream, long begin)
{
    constexpr std::size_t mostStreams = 64;
    constexpr long longestHead = 80;
    std::vector<OggStream> streams;
    std::optional<OggPage> page = OggPage::at(stream, begin);
    while (page && (page->beginsStream || streams.empty()) && streams.size() < mostStreams) {
        const long size = std::min(longestHead, page->end - page->body);
        OggStream one{begin, page->serial, OggCodec::Other,
                      stream.readAt(page->body, static_cast<unsigned long>(size))};
        one.codec = codecOf(one.head);
        streams.push_back(std::move(one));
        page = OggPage::at(stream, page->end);
    }
    return streams;
}

const OggStream* audiocore::musicAmong(const std::vector<OggStream>& streams)
{
    const auto music = std::find_if(streams.begin(), streams.end(),
                                    [](const OggStream& one) { return one.codec != OggCodec::Other; });
    return music == streams.end() ? nullptr : &*music;
}

std::optional<ByteVector> audiocore::oggComment(CheckedStream& stream, const OggStream& music, long mostBytes)
{
    std::optional<ByteVector> comment;
    OggPackets packets(stream, music.begin, music.serial);
    music.eachHeader(packets, mostBytes, [&](const OggPacket& packet) {
        const auto place = commentPlace(music.codec, packets.bytesOf(packet, 0, headOfPacket));
        if (place)
            comment = packets.bytesOf(packet, *place, packet.size);
        return music.codec == OggCodec::Flac && !comment;
    });
    return comment;
}

std::vector<ByteVector> audiocore::possibleComments(CheckedStream& stream, const OggStream& any,
                                                    long mostBytes)
{
    std::vector<ByteVector> comments;
    OggPackets packets(stream, any.begin, any.serial);
    any.eachHeader(packets, mostBytes, [&](const OggPacket& packet) {
        const ByteVector beginning = packets.bytesOf(packet, 0, headOfPacket);
        const auto place = any.codec == OggCodec::Other ? std::optional(behindAnyHead(beginning))
                                                        : commentPlace(any.codec, beginning);
        if (place)
            comments.push_back(packets.bytesOf(packet, *place, packet.size));
        return any.codec == OggCodec::Flac;
    });
    return comments;
}

long audiocore::eachSetup(CheckedStream& stream, const OggStream& music, long mostBytes,
                          const std::function<void(long begin, long size)>& tell)
{
    OggPackets packets(stream, music.begin, music.serial);
    long behind = 0;
    const auto take = [&](const OggPacket& packet, bool isSetup) {
        for (std::size_t i = 0; i < packet.pieces.size(); ++i) {
            const auto [first, place] = packet.pieces[i];
            const unsigned int next = i + 1 < packet.pieces.size() ? packet.pieces[i + 1].first : packet.size;
            behind = place + long(next - first);
            if (isSetup)
                tell(place, long(next - first));
        }
    };
    const bool isFlac = music.codec == OggCodec::Flac;
    OggPackets first(stream, music.begin, music.serial);
    if (const std::optional<OggPacket> packet = first.next(mostBytes)) {
        if (isFlac)
            tell(packet->pieces.front().second + long(flacRatesPlace), long(flac::ratesSize));
        take(*packet, !isFlac);
    }
    music.eachHeader(packets, mostBytes, [&](const OggPacket& packet) {
        take(packet, !isFlac && !commentPlace(music.codec, packets.bytesOf(packet, 0, headOfPacket)));
        return true;
    });
    const long end = packets.page().end;
    tell(behind, end - behind);
    return end;
}
