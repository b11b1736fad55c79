#include "media/mp4aac.h"

#include "media/mp4bits.h"

#include <algorithm>
#include <array>

using audiocore::Mp4Aac;
using audiocore::Mp4Bits;
using audiocore::Mp4SecondBand;

namespace {
constexpr std::uint32_t bandReplication = 5;
constexpr std::uint32_t parametricStereo = 29;
/// At higher rates nobody needs a second band.
constexpr std::int64_t highestHalfRate = 24000;

std::uint32_t readKind(Mp4Bits& bits)
{
    constexpr std::uint32_t escape = 31;
    const std::uint32_t kind = bits.read(5);
    return kind == escape ? 32 + bits.read(6) : kind;
}

std::int64_t readRate(Mp4Bits& bits)
{
    static constexpr std::array<std::int64_t, 13> rates = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                                           22050, 16000, 12000, 11025, 8000,  7350};
    constexpr std::uint32_t written = 15;
    const std::uint32_t index = bits.read(4);
    if (index == written)
        return bits.read(24);
    return index < rates.size() ? rates[index] : 0;
}

/// A second band that is as wide as the first one adds nothing.
Mp4SecondBand bandOf(std::int64_t rate, std::int64_t rateWithIt)
{
    return rateWithIt > rate ? Mp4SecondBand::Yes : Mp4SecondBand::No;
}

/// What may stand behind the rest of the configuration, for decoders that know of it. Its place depends on
/// much of that rest: it is searched for.
Mp4SecondBand bandBehind(Mp4Bits bits, std::int64_t rate)
{
    constexpr std::uint32_t mark = 0x2B7;
    constexpr int markSize = 11;
    for (; bits.left() > markSize + 4; bits.skip(1)) {
        Mp4Bits here = bits;
        if (here.read(markSize) != mark || readKind(here) != bandReplication)
            continue;
        if (here.read(1) == 0)
            return Mp4SecondBand::No;
        return readRate(here) > rate ? Mp4SecondBand::Yes : Mp4SecondBand::Unsaid;
    }
    return rate > highestHalfRate ? Mp4SecondBand::No : Mp4SecondBand::Unsaid;
}

constexpr std::uint32_t fill = 6;
constexpr std::uint32_t theEnd = 7;

/// Whether filling alone leads from here to the frame's end, a second band in it.
bool bandLeadsTo(std::int64_t end, Mp4Bits bits)
{
    constexpr int mostElements = 4;
    constexpr std::uint32_t band = 13;
    constexpr std::uint32_t bandWithSum = 14;
    constexpr std::uint32_t escape = 15;
    bool found = false;
    for (int elements = 0; elements < mostElements; ++elements) {
        const std::uint32_t element = bits.read(3);
        if (element == theEnd)
            return found && bits.position() == end;
        if (element != fill)
            return false;
        std::uint32_t bytes = bits.read(4);
        if (bytes == escape)
            bytes += bits.read(8) - 1;
        const std::uint32_t kind = Mp4Bits(bits).read(4);
        found = found || (bytes > 0 && (kind == band || kind == bandWithSum));
        bits.skip(std::int64_t(bytes) * 8);
    }
    return false;
}

/// What stands in front of the filling ends where decoding it ends: each place is tried.
bool holdsSecondBand(const TagLib::ByteVector& frame)
{
    std::int64_t end = std::int64_t(frame.size()) * 8; // behind the last bit that is set
    while (end > 0 && !(frame.data()[(end - 1) / 8] >> (7 - (end - 1) % 8) & 1))
        --end;
    Mp4Bits bits(frame);
    for (; bits.position() < end; bits.skip(1))
        if (bandLeadsTo(end, bits))
            return true;
    return false;
}
} // namespace

Mp4Aac audiocore::readAacConfig(const TagLib::ByteVector& config)
{
    constexpr int channels = 4;
    Mp4Bits bits(config);
    const std::uint32_t kind = readKind(bits);
    Mp4Aac aac;
    aac.rate = readRate(bits);
    bits.skip(channels);
    if (kind == bandReplication || kind == parametricStereo)
        aac.secondBand = bandOf(aac.rate, readRate(bits));
    else
        aac.secondBand = bandBehind(bits, aac.rate);
    return aac;
}

bool audiocore::holdSecondBand(const TagLib::ByteVectorList& frames)
{
    constexpr unsigned int enough = 3;
    const auto holding = std::count_if(frames.begin(), frames.end(), holdsSecondBand);
    return holding >= enough && holding > std::int64_t(frames.size() / 2);
}
