#include "media/mp4sound.h"

#include "media/mp4atoms.h"

#include <taglib/tfile.h>

#include <algorithm>
#include <limits>

using audiocore::Mp4Atom;
using audiocore::Mp4Atoms;
using audiocore::MpegStream;
using TagLib::ByteVector;

namespace {
constexpr std::int64_t highestRate = 768000; // of any music

/// The beginning of what is in the atom, as much of it as is ever looked at, filled up with zeros.
ByteVector contentOf(TagLib::File& file, const Mp4Atom* atom)
{
    constexpr std::int64_t enough = 256;
    ByteVector content;
    if (atom) {
        file.seek(atom->content());
        content = file.readBlock(size_t(std::min(enough, atom->end() - atom->content())));
    }
    content.resize(enough, '\0');
    return content;
}

const Mp4Atom* inside(const Mp4Atoms& atoms, const Mp4Atom* atom, std::initializer_list<const char*> path)
{
    for (const char* name : path) {
        const Mp4Atom* next = nullptr;
        for (const Mp4Atom* child : atom ? atoms.childrenOf(*atom) : std::vector<const Mp4Atom*>())
            if (!next && child->name == name)
                next = child;
        atom = next;
    }
    return atom;
}

/// How long the track is, and in what parts of a second that is counted.
struct Duration
{
    std::int64_t unit = 0;
    std::int64_t length = 0;

    std::int64_t milliseconds() const
    {
        const double exact = unit > 0 && length > 0 ? double(length) * 1000.0 / double(unit) + 0.5 : 0.0;
        return exact < double(std::numeric_limits<std::int32_t>::max()) ? std::int64_t(exact) : 0;
    }
};

Duration durationOf(const ByteVector& header)
{
    if (header.data()[0] == 1)
        return {header.toUInt(20u), header.toLongLong(24u)};
    return {header.toUInt(12u), header.toUInt(16u)};
}

/// Past a descriptor's tag and its size, which has up to four bytes.
unsigned int behindSize(const ByteVector& bytes, unsigned int tag)
{
    unsigned int at = tag + 1;
    while (at < tag + 4 && (bytes.data()[at] & 0x80))
        ++at;
    return at + 1;
}

std::int64_t bitRateOfAac(const ByteVector& description)
{
    constexpr unsigned int stream = 56;
    const char* bytes = description.data();
    if (!description.containsAt("esds", 48) || bytes[stream] != 3)
        return 0;
    const unsigned int decoder = behindSize(description, stream) + 3;
    return bytes[decoder] == 4 ? description.toUInt(behindSize(description, decoder) + 9) : 0;
}

MpegStream describedBy(const ByteVector& description, const Duration& duration)
{
    MpegStream sound;
    sound.milliseconds = duration.milliseconds();
    if (description.containsAt("mp4a", 12)) {
        // There is no room for high rates; what the track is counted in is the rate then.
        const std::int64_t rate = description.toUShort(40u);
        sound.sampleRate = std::int32_t(rate > 0 || duration.unit > highestRate ? rate : duration.unit);
        sound.bitsPerSecond = bitRateOfAac(description);
    } else if (description.containsAt("alac", 12) && description.containsAt("alac", 48)) {
        sound.sampleRate = std::int32_t(std::min<std::int64_t>(description.toUInt(76u), 1 << 30));
        sound.bitsPerSecond = description.toUInt(72u);
    }
    return sound;
}

std::int64_t bytesOfSound(const Mp4Atoms& atoms)
{
    std::int64_t bytes = 0;
    for (const Mp4Atom& atom : atoms.all())
        if (atom.depth == 0 && atom.name == "mdat")
            bytes += atom.size;
    return bytes;
}
} // namespace

MpegStream audiocore::measureMp4(TagLib::File& file, const Mp4Atoms& atoms)
{
    for (const Mp4Atom* track : atoms.findAll({"moov", "trak"})) {
        if (!contentOf(file, inside(atoms, track, {"mdia", "hdlr"})).containsAt("soun", 8))
            continue;
        const Duration duration = durationOf(contentOf(file, inside(atoms, track, {"mdia", "mdhd"})));
        const Mp4Atom* description = inside(atoms, track, {"mdia", "minf", "stbl", "stsd"});
        MpegStream sound = describedBy(contentOf(file, description), duration);
        if (sound.bitsPerSecond == 0 && sound.milliseconds > 0)
            sound.bitsPerSecond =
                std::int64_t(double(bytesOfSound(atoms)) * 8000.0 / double(sound.milliseconds));
        return sound;
    }
    return MpegStream();
}
