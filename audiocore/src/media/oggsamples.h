#pragma once

#include <taglib/tbytevector.h>

#include <cstdint>
#include <functional>

/// How many samples a packet of Ogg plays, by its first bytes alone: where the music of a stream begins is
/// told by nothing else.
namespace audiocore {
/// So many bytes of a packet are asked for.
constexpr unsigned int packetBeginning = 16;
/// And so many of the end of the header that tells how packets of Vorbis are made.
constexpr unsigned int setupEnd = 512;

/// Of the packets of one stream, from its first one on.
using SamplesOfPacket = std::function<std::int64_t(const TagLib::ByteVector& beginning)>;

/// By the stream's first packet and the end of the setup header. Null where it makes no sense.
SamplesOfPacket vorbisSamples(const TagLib::ByteVector& head, const TagLib::ByteVector& endOfSetup);
std::int64_t opusSamples(const TagLib::ByteVector& packet);
std::int64_t flacSamples(const TagLib::ByteVector& packet);
/// By the stream's first packet.
SamplesOfPacket speexSamples(const TagLib::ByteVector& head);
} // namespace audiocore
