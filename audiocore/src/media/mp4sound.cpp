#include "media/mp4sound.h"

#include "base/checkedmath.h"
#include "media/mp4aac.h"
#include "media/mp4atoms.h"
#include "media/mp4entry.h"
#include "media/mp4tables.h"
#include "media/soundlimits.h"

#include <taglib/tfile.h>

#include <algorithm>
#include <limits>

using audiocore::Mp4Atom;
using audiocore::Mp4Atoms;
using audiocore::Mp4Entry;
using audiocore::MpegStream;
using TagLib::ByteVector;

namespace {
/// How long something is, and in what parts of a second that is counted.
struct Duration
{
    std::int64_t unit = 0;
    std::int64_t length = 0; ///< zero where it is not said

    std::int64_t milliseconds() const
    {
        const double exact = unit > 0 && length > 0 ? double(length) * 1000.0 / double(unit) + 0.5 : 0.0;
        return exact < double(std::numeric_limits<std::int32_t>::max()) ? std::int64_t(exact) : 0;
    }
};

/// What the header of a track or of the whole file says; all ones stand for nothing.
Duration durationOf(const ByteVector& header)
{
    if (header[0] == 1)
        return {header.toUInt(20u), std::max<std::int64_t>(header.toLongLong(24u), 0)};
    const std::uint32_t length = header.toUInt(16u);
    return {header.toUInt(12u), length == 0xFFFFFFFF ? 0 : length};
}

/// A track of sound.
class Track
{
public:
    Track(TagLib::File& file, const Mp4Atoms& atoms, const Mp4Atom& track)
        : m_file(file), m_atoms(atoms), m_track(track)
    {
    }

    bool isSound() const { return headOf(m_file, inside({"mdia", "hdlr"})).containsAt("soun", 8); }
    MpegStream sound() const;

private:
    const Mp4Atom* inside(const std::vector<std::string>& path) const
    {
        return m_atoms.findIn(m_track, path);
    }
    const Mp4Atom* table(const char* name) const { return inside({"mdia", "minf", "stbl", name}); }
    std::int64_t fragmentedMilliseconds(std::int64_t unit) const;
    std::int64_t milliseconds(Duration own) const;
    std::int64_t rate(const Mp4Entry& entry, std::int64_t unit) const;
    bool hasSecondBand(const Mp4Entry& entry) const;
    std::int64_t bytes() const;

    TagLib::File& m_file;
    const Mp4Atoms& m_atoms;
    const Mp4Atom& m_track;
};

MpegStream Track::sound() const
{
    const Mp4Atom* descriptions = table("stsd");
    if (!descriptions)
        return MpegStream();
    const Duration duration = durationOf(headOf(m_file, inside({"mdia", "mdhd"})));
    const Mp4Entry entry = audiocore::readMp4Entry(m_file, *descriptions);
    MpegStream sound;
    sound.sampleRate = std::int32_t(rate(entry, duration.unit));
    sound.milliseconds = milliseconds(duration);
    sound.bitsPerSecond = entry.bitsPerSecond;
    if (sound.bitsPerSecond == 0 && sound.milliseconds > 0)
        sound.bitsPerSecond = std::int64_t(double(bytes()) * 8000.0 / double(sound.milliseconds));
    return sound;
}

/// There is no room for high rates; what the track is counted in is the rate then.
std::int64_t Track::rate(const Mp4Entry& entry, std::int64_t unit) const
{
    const std::int64_t rate = (entry.rate > 0 ? entry.rate : unit) * (hasSecondBand(entry) ? 2 : 1);
    return rate <= audiocore::mostSampleRate ? rate : 0;
}

bool Track::hasSecondBand(const Mp4Entry& entry) const
{
    const Mp4Atom* tables = entry.mayHaveSecondBand ? inside({"mdia", "minf", "stbl"}) : nullptr;
    if (!tables)
        return false;
    const TagLib::ByteVectorList frames = audiocore::firstFrames(m_file, m_atoms, *tables);
    return frames.isEmpty() ? entry.writtenRate == 2 * entry.rate : audiocore::holdSecondBand(frames);
}

std::int64_t Track::fragmentedMilliseconds(std::int64_t unit) const
{
    const ByteVector header = headOf(m_file, inside({"tkhd"}));
    const std::uint32_t number = header.toUInt(header[0] == 1 ? 20u : 12u);
    const Duration byFragments{unit, audiocore::endOfFragments(m_file, m_atoms, number)};
    if (byFragments.length > 0)
        return byFragments.milliseconds();
    Duration whole = durationOf(headOf(m_file, m_atoms.find({"moov", "mvhd"})));
    const ByteVector said = headOf(m_file, m_atoms.find({"moov", "mvex", "mehd"}));
    whole.length = said[0] == 1 ? said.toLongLong(4u) : said.toUInt(4u);
    return whole.milliseconds();
}

std::int64_t Track::milliseconds(Duration own) const
{
    if (own.length == 0)
        own.length = audiocore::totalDuration(m_file, table("stts"));
    return std::max(own.milliseconds(), m_atoms.find({"moof"}) ? fragmentedMilliseconds(own.unit) : 0);
}

/// Of the sound; of all that the file has where there is no telling.
std::int64_t Track::bytes() const
{
    std::int64_t bytes = m_atoms.find({"moof"}) ? 0 : audiocore::totalSize(m_file, table("stsz"));
    if (bytes > 0)
        return bytes;
    for (const Mp4Atom* data : m_atoms.findAll({"mdat"}))
        bytes += data->end() - data->content();
    return bytes;
}
} // namespace

MpegStream audiocore::measureMp4(TagLib::File& file, const Mp4Atoms& atoms)
{
    for (const Mp4Atom* atom : atoms.findAll({"moov", "trak"})) {
        const Track track(file, atoms, *atom);
        if (!track.isSound())
            continue;
        const MpegStream sound = track.sound();
        if (sound.sampleRate > 0)
            return sound;
    }
    return MpegStream();
}
