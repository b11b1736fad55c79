#include "media/mp4entry.h"

#include "media/mp4aac.h"
#include "media/mp4atoms.h"
#include "media/mp4bits.h"
#include "media/soundlimits.h"

#include <taglib/tfile.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>

using audiocore::Mp4Atom;
using audiocore::mp4AtomHead;
using audiocore::Mp4Bits;
using audiocore::Mp4Entry;
using TagLib::ByteVector;

namespace {

/// A part of the file that atoms lie in.
struct Range
{
    std::int64_t begin = 0;
    std::int64_t end = 0;

    std::int64_t size() const { return end - begin; }
};

/// As much of it as is ever looked at.
ByteVector bytesOf(TagLib::File& file, const Range& range)
{
    constexpr std::int64_t enough = 1024;
    if (range.size() <= 0)
        return ByteVector();
    file.seek(range.begin);
    return file.readBlock(size_t(std::min(enough, range.size())));
}

/// The content of the first atom of the name; empty without one.
Range inside(TagLib::File& file, Range range, const char* name)
{
    constexpr int mostAtoms = 32;
    for (int atoms = 0; atoms < mostAtoms && range.size() >= mp4AtomHead; ++atoms) {
        file.seek(range.begin);
        const ByteVector head = file.readBlock(size_t(mp4AtomHead));
        const std::int64_t size = head.size() < unsigned(mp4AtomHead) ? 0 : head.toUInt(0u);
        if (size < mp4AtomHead || size > range.size())
            break;
        if (head.containsAt(name, 4))
            return {range.begin + mp4AtomHead, range.begin + size};
        range.begin += size;
    }
    return Range();
}

/// The entry's own content, and the atoms behind it.
struct Description
{
    std::string codec;
    std::int64_t rate = 0;
    Range atoms;
};

Description describedIn(TagLib::File& file, const Mp4Atom& descriptions)
{
    constexpr std::int64_t listHead = 8; // version and number of entries
    const Range range{descriptions.content() + listHead, descriptions.end()};
    ByteVector entry = bytesOf(file, range);
    const std::int64_t size = entry.size() < unsigned(mp4AtomHead) ? 0 : entry.toUInt(0u);
    if (size < mp4AtomHead || size > range.size())
        return Description();
    entry.resize(128, '\0');
    Description described{std::string(entry.data() + 4, 4), entry.toUShort(32u), {0, range.begin + size}};
    // Two later versions have more numbers; the second one a rate of its own. A list that has a version
    // itself counts them otherwise.
    file.seek(descriptions.content());
    const ByteVector listVersion = file.readBlock(1);
    const unsigned int version = listVersion == ByteVector(1, '\0') ? entry.toUShort(16u) : 0;
    if (version == 2) {
        const double rate = entry.toFloat64BE(40);
        described.rate = rate > 0 && rate <= audiocore::mostSampleRate ? std::lround(rate) : 0;
    }
    described.atoms.begin = range.begin + (version == 2 ? 72 : version == 1 ? 52 : 36);
    return described;
}

/// An atom of the entry: it may lie in one around it that is there for that alone.
Range inEntry(TagLib::File& file, const Description& entry, const char* name)
{
    const Range found = inside(file, entry.atoms, name);
    return found.size() > 0 ? found : inside(file, inside(file, entry.atoms, "wave"), name);
}

/// Past a descriptor's size, which has up to four bytes.
std::uint32_t readSize(Mp4Bits& bits)
{
    std::uint32_t size = 0;
    for (int bytes = 0; bytes < 4; ++bytes) {
        const bool further = bits.read(1) != 0;
        size = size << 7 | bits.read(7);
        if (!further)
            break;
    }
    return size;
}

/// Past what names the stream and its relations.
void skipStreamHead(Mp4Bits& bits)
{
    bits.skip(16);
    const bool depends = bits.read(1) != 0;
    const bool hasUrl = bits.read(1) != 0;
    const bool hasClock = bits.read(1) != 0;
    bits.skip(5 + (depends ? 16 : 0));
    if (hasUrl)
        bits.skip(std::int64_t(bits.read(8)) * 8);
    bits.skip(hasClock ? 16 : 0);
}

void takeAac(Mp4Entry& entry, const ByteVector& config)
{
    const audiocore::Mp4Aac aac = audiocore::readAacConfig(config);
    if (aac.rate == 0)
        return;
    entry.rate = aac.rate * (aac.secondBand == audiocore::Mp4SecondBand::Yes ? 2 : 1);
    entry.mayHaveSecondBand = aac.secondBand == audiocore::Mp4SecondBand::Unsaid;
}

bool isAac(std::uint32_t kind)
{
    return kind == 0x40 || (kind >= 0x66 && kind <= 0x68);
}

void takeStreamDescriptor(Mp4Entry& entry, const ByteVector& bytes)
{
    constexpr unsigned int versionAndFlags = 4;
    constexpr std::uint32_t stream = 3;
    constexpr std::uint32_t decoder = 4;
    constexpr std::uint32_t decoderConfig = 5;
    Mp4Bits bits(bytes, versionAndFlags);
    if (bits.read(8) != stream)
        return;
    readSize(bits);
    skipStreamHead(bits);
    if (bits.read(8) != decoder)
        return;
    readSize(bits);
    const std::uint32_t kind = bits.read(8);
    bits.skip(8 + 24 + 32);
    entry.bitsPerSecond = bits.read(32);
    if (!isAac(kind) || bits.read(8) != decoderConfig)
        return;
    const std::uint32_t size = readSize(bits);
    takeAac(entry, bytes.mid(unsigned(bits.position() / 8), size));
}

/// Some writers say what it would be without any coding: that tells nothing.
void takeAlac(Mp4Entry& entry, const ByteVector& bytes)
{
    constexpr int sampleSize = 9;
    constexpr int channels = 13;
    if (bytes.size() < 28)
        return;
    entry.rate = bytes.toUInt(24u);
    const std::int64_t uncoded = entry.rate * std::uint8_t(bytes[sampleSize]) * std::uint8_t(bytes[channels]);
    const std::int64_t said = bytes.toUInt(20u);
    entry.bitsPerSecond = said == uncoded ? 0 : said;
}

void takeFlac(Mp4Entry& entry, const ByteVector& bytes)
{
    constexpr unsigned int beforeRate = 18;
    if (bytes.size() >= beforeRate + 4)
        entry.rate = bytes.toUInt(beforeRate) >> 12;
}

void takeOpus(Mp4Entry& entry, const ByteVector&)
{
    entry.rate = 48000; // whatever it was made from
}

void takeAc3Rate(Mp4Entry& entry, std::uint32_t code)
{
    static constexpr std::int64_t rates[] = {48000, 44100, 32000};
    if (code < std::size(rates))
        entry.rate = rates[code];
}

void takeAc3(Mp4Entry& entry, const ByteVector& bytes)
{
    static constexpr std::int64_t kilobits[] = {32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                                192, 224, 256, 320, 384, 448, 512, 576, 640};
    Mp4Bits bits(bytes);
    takeAc3Rate(entry, bits.read(2));
    bits.skip(12);
    const std::uint32_t code = bits.read(5);
    if (code < std::size(kilobits))
        entry.bitsPerSecond = kilobits[code] * 1000;
}

void takeEac3(Mp4Entry& entry, const ByteVector& bytes)
{
    Mp4Bits bits(bytes);
    entry.bitsPerSecond = std::int64_t(bits.read(13)) * 1000;
    bits.skip(3);
    takeAc3Rate(entry, bits.read(2));
}

struct Codec
{
    const char* codec; ///< empty for all that have the atom
    const char* atom;
    void (*take)(Mp4Entry& entry, const ByteVector& content);
};

constexpr Codec codecs[] = {{"alac", "alac", takeAlac}, {"fLaC", "dfLa", takeFlac},
                            {"Opus", "dOps", takeOpus}, {"ac-3", "dac3", takeAc3},
                            {"ec-3", "dec3", takeEac3}, {"", "esds", takeStreamDescriptor}};
} // namespace

Mp4Entry audiocore::readMp4Entry(TagLib::File& file, const Mp4Atom& descriptions)
{
    const Description described = describedIn(file, descriptions);
    Mp4Entry entry;
    entry.rate = described.rate;
    entry.writtenRate = described.rate;
    for (const Codec& codec : codecs) {
        if (*codec.codec && described.codec != codec.codec)
            continue;
        const Range content = inEntry(file, described, codec.atom);
        if (content.size() <= 0)
            continue;
        codec.take(entry, bytesOf(file, content));
        break;
    }
    return entry;
}
