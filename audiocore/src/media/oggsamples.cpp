#include "media/oggsamples.h"

#include <array>
#include <utility>
#include <vector>

using audiocore::SamplesOfPacket;
using TagLib::ByteVector;

namespace {
unsigned int byteAt(const ByteVector& bytes, unsigned int place)
{
    return place < bytes.size() ? static_cast<unsigned char>(bytes.data()[place]) : 0u;
}

/// The number of `count` bits at the bit, the lowest one first.
unsigned int bitsAt(const ByteVector& bytes, unsigned int bit, unsigned int count)
{
    unsigned int number = 0;
    for (unsigned int i = 0; i < count; ++i)
        number |= (byteAt(bytes, (bit + i) / 8) >> (bit + i) % 8 & 1u) << i;
    return number;
}

/// Of each mode that packets may have, whether its blocks are long. They end the setup header, and what is in
/// front of them cannot be passed over without decoding it: they are read from the end on. Empty for none.
std::vector<bool> vorbisModes(const ByteVector& setup)
{
    constexpr unsigned int modeSize = 41; // bits: long or not, two zeros of 16, which mapping
    constexpr unsigned int countSize = 6;
    constexpr unsigned int mostModes = 64;
    unsigned int bit = setup.size() * 8;
    while (bit > 0 && bitsAt(setup, bit - 1, 1) == 0)
        --bit;
    if (bit == 0)
        return {};
    --bit;                   // the one that ends the header
    std::vector<bool> modes; // the last one first
    std::size_t counted = 0;
    while (modes.size() < mostModes && bit >= modeSize + countSize) {
        bit -= modeSize;
        if (bitsAt(setup, bit + 1, 32) != 0 || bitsAt(setup, bit + 33, 8) >= mostModes)
            break;
        modes.push_back(bitsAt(setup, bit, 1) != 0);
        if (bitsAt(setup, bit - countSize, countSize) + 1 == modes.size())
            counted = modes.size();
    }
    modes.resize(counted);
    return {modes.rbegin(), modes.rend()};
}

/// Each block is laid half over the one before.
class VorbisBlocks
{
public:
    VorbisBlocks(std::vector<bool> modes, unsigned int sizes)
        : m_modes(std::move(modes)), m_sizes{1u << (sizes & 15), 1u << (sizes >> 4)}
    {
        while ((1u << m_modeBits) < m_modes.size())
            ++m_modeBits;
    }

    std::int64_t operator()(const ByteVector& packet)
    {
        const unsigned int mode = bitsAt(packet, 1, m_modeBits);
        if (packet.isEmpty() || bitsAt(packet, 0, 1) != 0 || mode >= m_modes.size())
            return 0; // not played
        const unsigned int size = m_sizes[m_modes[mode] ? 1 : 0];
        const unsigned int samples = m_before > 0 ? m_before / 4 + size / 4 : 0;
        m_before = size;
        return samples;
    }

private:
    std::vector<bool> m_modes;
    std::array<unsigned int, 2> m_sizes;
    unsigned int m_modeBits = 0;
    unsigned int m_before = 0;
};
} // namespace

SamplesOfPacket audiocore::vorbisSamples(const ByteVector& head, const ByteVector& endOfSetup)
{
    constexpr unsigned int sizesPlace = 28;
    std::vector<bool> modes = vorbisModes(endOfSetup);
    if (modes.empty())
        return nullptr;
    return VorbisBlocks(std::move(modes), byteAt(head, sizesPlace));
}

std::int64_t audiocore::opusSamples(const ByteVector& packet)
{
    constexpr std::array<int, 4> speech{480, 960, 1920, 2880};
    constexpr std::array<int, 4> music{120, 240, 480, 960};
    const unsigned int head = byteAt(packet, 0);
    const unsigned int kind = head >> 3;
    const int samples = kind < 12 ? speech[kind & 3] : kind < 16 ? speech[kind & 1] : music[kind & 3];
    constexpr std::array<int, 3> frames{1, 2, 2};
    return std::int64_t(samples) * ((head & 3) == 3 ? int(byteAt(packet, 1) & 63) : frames[head & 3]);
}

std::int64_t audiocore::flacSamples(const ByteVector& packet)
{
    constexpr unsigned int number = 4; // of the frame or the sample, in as many bytes as its first one tells
    const unsigned int code = byteAt(packet, 2) >> 4;
    if (byteAt(packet, 0) != 0xFF || code == 0)
        return 0;
    if (code == 1)
        return 192;
    if (code < 6)
        return 576 << (code - 2);
    if (code >= 8)
        return 256 << (code - 8);
    unsigned int behind = number + 1;
    for (unsigned int lead = byteAt(packet, number); (lead & 0xC0) == 0xC0; lead = lead << 1 & 0xFF)
        ++behind;
    const unsigned int first = byteAt(packet, behind);
    return code == 6 ? first + 1 : (first << 8 | byteAt(packet, behind + 1)) + 1;
}

SamplesOfPacket audiocore::speexSamples(const ByteVector& head)
{
    constexpr unsigned int frameSizePlace = 56;
    constexpr unsigned int framesPlace = 64;
    constexpr unsigned int mostSamples = 1 << 20;
    if (head.size() < framesPlace + 4)
        return nullptr;
    const std::uint64_t samples =
        std::uint64_t(head.toUInt(frameSizePlace, false)) * head.toUInt(framesPlace, false);
    if (samples > mostSamples)
        return nullptr;
    return [samples](const ByteVector&) { return std::int64_t(samples); };
}
