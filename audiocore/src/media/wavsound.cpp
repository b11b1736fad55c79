#include "media/wavsound.h"

#include "base/checkedmath.h"
#include "media/checkedstream.h"
#include "media/wavchunks.h"

#include <algorithm>

namespace checked = base::checked;

using audiocore::CheckedStream;
using audiocore::MpegStream;
using audiocore::StreamOffset;
using audiocore::StreamSize;
using audiocore::WavChunk;
using audiocore::WavChunks;
using TagLib::ByteVector;

namespace {
// Of the chunk that tells the kind.
constexpr unsigned int shortest = 16;
constexpr unsigned int withBlocks = 20;
constexpr unsigned int longest = 40;

enum WavKind {
    Pcm = 1,
    AdpcmOfMicrosoft = 2,
    Float = 3,
    ALaw = 6,
    MuLaw = 7,
    AdpcmOfIma = 0x11,
    Gsm = 0x31,
    Extensible = 0xFFFE
};

/// What the chunk tells, all of it as it stands there.
struct Format
{
    int kind = 0;
    std::int64_t channels = 0;
    int sampleRate = 0;
    std::int64_t bytesPerSecond = 0;
    std::int64_t blockSize = 0;
    std::int64_t samplesInBlock = 0; ///< where it is of a kind that has them
    int bits = 0;

    explicit Format(const ByteVector& bytes)
        : kind(bytes.toUShort(0, false)), channels(bytes.toUShort(2, false)),
          sampleRate(int(bytes.toUInt(4, false))), bytesPerSecond(bytes.toUInt(8, false)),
          blockSize(bytes.toUShort(12, false)), bits(bytes.toUShort(14, false))
    {
        if (kind == Extensible && bytes.size() == longest)
            kind = bytes.toUShort(24, false);
        if (bytes.size() >= withBlocks && (kind == AdpcmOfMicrosoft || kind == AdpcmOfIma || kind == Gsm))
            samplesInBlock = bytes.toUShort(18, false);
    }
    /// Bytes of one sample of all channels; 0 where samples have no bytes of their own.
    std::int64_t frameSize() const
    {
        return kind == Pcm || kind == Float || kind == ALaw || kind == MuLaw ? channels * ((bits + 7) / 8)
                                                                             : 0;
    }
    std::int64_t milliseconds(std::int64_t samples) const
    {
        return checked::scaled(checked::sum(checked::product(samples, 1000), sampleRate / 2), 1, sampleRate);
    }
    /// By what their blocks hold, or as many bytes as a second is said to take.
    std::int64_t millisecondsOfBytes(std::int64_t bytes) const
    {
        if (samplesInBlock > 0 && blockSize > 0)
            return milliseconds(bytes / blockSize * samplesInBlock);
        return checked::scaled(bytes, 1000, bytesPerSecond);
    }
};

/// The samples that the file counts; 0 where it does not.
std::int64_t countedSamples(CheckedStream& stream, const WavChunks& chunks)
{
    const WavChunk* const count = chunks.find({"fact"});
    return count && count->size >= 4 ? stream.readAt(StreamOffset(count->begin), 4).toUInt(0, false) : 0;
}

/// The count is exact where it counts what is there, and not what once was or was to come.
bool isBelieved(std::int64_t counted, std::int64_t estimated)
{
    return counted > 0 && (estimated == 0 || (counted / 2 <= estimated && estimated / 2 <= counted));
}

MpegStream uncompressed(const Format& format, std::int64_t bytes)
{
    MpegStream result;
    result.sampleRate = format.sampleRate;
    result.milliseconds = format.milliseconds(bytes / format.frameSize());
    result.bitsPerSecond = checked::product(format.sampleRate, format.frameSize() * 8);
    return result;
}
} // namespace

MpegStream audiocore::measureWav(CheckedStream& stream, const WavChunks& chunks)
{
    const WavChunk* const kind = chunks.find({"fmt "});
    const WavChunk* const sound = chunks.sound();
    if (!kind || !sound || kind->size < shortest)
        return MpegStream();
    const ByteVector bytes =
        stream.readAt(StreamOffset(kind->begin), StreamSize(std::min<std::int64_t>(kind->size, longest)));
    if (bytes.size() < shortest)
        return MpegStream();
    const Format format(bytes);
    if (format.frameSize() > 0)
        return uncompressed(format, sound->size);
    MpegStream result;
    result.sampleRate = format.sampleRate;
    const std::int64_t estimated = format.millisecondsOfBytes(sound->size);
    const std::int64_t counted = format.milliseconds(countedSamples(stream, chunks));
    result.milliseconds = chunks.soundHasSize() && isBelieved(counted, estimated) ? counted : estimated;
    result.bitsPerSecond = result.milliseconds > 0 ? checked::scaled(sound->size, 8000, result.milliseconds)
                                                   : format.bytesPerSecond * 8;
    return result;
}
