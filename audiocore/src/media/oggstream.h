#pragma once

#include "media/oggpacket.h"

#include <taglib/tbytevector.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace audiocore {
enum class OggCodec { Vorbis, Opus, Flac, Speex, Other };

/// One of the streams that begin together in an Ogg file. Pages of others may lie between its pages, and
/// further streams behind it.
struct OggStream
{
    long begin = 0; ///< of the first page of all streams
    std::uint32_t serial = 0;
    OggCodec codec = OggCodec::Other;
    TagLib::ByteVector head; ///< its first packet, as much as tells of its music

    /// Hertz; 0 for what is not known as music.
    std::int32_t sampleRate() const;
    /// Goes through the header packets behind the first one until `take` answers false, or they are more than
    /// that many bytes. The packets are at their beginning.
    void eachHeader(OggPackets& packets, long mostBytes,
                    const std::function<bool(const OggPacket&)>& take) const;
};

/// Those whose first pages lie there, one behind the other.
std::vector<OggStream> oggStreams(CheckedStream& stream, long begin);
/// The first one that is music; null for none.
const OggStream* musicAmong(const std::vector<OggStream>& streams);

/// The first comment in the header packets of the music; nothing when these take more than `mostBytes`.
std::optional<TagLib::ByteVector> oggComment(CheckedStream& stream, const OggStream& music, long mostBytes);
/// What decoders take for a comment in the header packets, be the stream music or not.
std::vector<TagLib::ByteVector> possibleComments(CheckedStream& stream, const OggStream& any, long mostBytes);
/// Tells of the parts of the header packets that set a decoder up, without the comment. Where the page ends
/// on which the last header packet does; what there is behind that packet is told of, too.
long eachSetup(CheckedStream& stream, const OggStream& music, long mostBytes,
               const std::function<void(long begin, long size)>& tell);
} // namespace audiocore
