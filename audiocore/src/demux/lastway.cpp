// Reads what libavformat knows and nobody else does. The door that the readers of tags come through.
#include "media/lastway.h"

#include "audiocore/tagitem.h"
#include "base/checkedmath.h"
#include "demux/demuxer.h"
#include "enginedoor.h"
#include "media/soundlimits.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/mem.h>
}

#include <cstring>
#include <limits>
#include <mutex>

namespace checked = base::checked;

using audiocore::Demuxer;
using audiocore::ForeignBytes;
using audiocore::ForeignMedia;
using TagLib::ByteVector;

namespace {
constexpr int mostStreams = 8;
constexpr std::size_t largestBlock = 8 * 1024 * 1024;
constexpr std::int64_t longestGuess = 1024 * 1024; // bytes

/// Files say how much memory their tables are to take. The bound holds for all of libavutil, so it is there
/// while one file is read, and one at a time.
class BoundedMemory
{
public:
    BoundedMemory() : m_lock(mutex()) { av_max_alloc(largestBlock); }
    ~BoundedMemory() { av_max_alloc(std::numeric_limits<int>::max()); }
    BoundedMemory(const BoundedMemory&) = delete;
    BoundedMemory& operator=(const BoundedMemory&) = delete;

private:
    static std::mutex& mutex()
    {
        static std::mutex one;
        return one;
    }

    const std::lock_guard<std::mutex> m_lock;
};

/// The names of a text, the one that counts first at first.
const char* const names[][3] = {{"title"}, {"artist", "author"}, {"album"},
                                {"genre"}, {"date", "year"},     {"track"}};

ByteVector textIn(const AVDictionary* fields, int type)
{
    for (const char* const name : names[type])
        if (const AVDictionaryEntry* const entry = name ? av_dict_get(fields, name, nullptr, 0) : nullptr)
            return ByteVector(entry->value, unsigned(std::strlen(entry->value)));
    return ByteVector();
}

void readPicture(const AVStream& stream, ForeignMedia& media)
{
    const AVDictionaryEntry* const kind = av_dict_get(stream.metadata, "comment", nullptr, 0);
    const AVPacket& picture = stream.attached_pic;
    if (picture.size > 0)
        media.pictures.push_back(
            {ByteVector(reinterpret_cast<const char*>(picture.data), unsigned(picture.size)),
             kind && std::strcmp(kind->value, "Cover (front)") == 0});
}

void readTags(const AVFormatContext& context, const AVStream& sound, ForeignMedia& media)
{
    for (int type = TAG_TITLE; type <= TAG_TRACK; ++type) {
        ByteVector& text = media.texts.at(std::size_t(type));
        text = textIn(context.metadata, type);
        if (text.isEmpty())
            text = textIn(sound.metadata, type);
    }
    for (unsigned int i = 0; i < context.nb_streams; ++i)
        if (context.streams[i]->disposition & AV_DISPOSITION_ATTACHED_PIC)
            readPicture(*context.streams[i], media);
}

std::int64_t milliseconds(std::int64_t duration, AVRational unit)
{
    if (duration <= 0 || unit.num <= 0 || unit.den <= 0)
        return 0;
    return checked::scaled(checked::product(duration, unit.num), 1000, unit.den);
}

/// Of a stream whose header does not tell it, by its packets.
std::int64_t lengthOfPackets(AVFormatContext& context, const AVStream& sound)
{
    std::int64_t duration = 0;
    AVPacket* packet = av_packet_alloc();
    while (packet && av_read_frame(&context, packet) >= 0) {
        if (packet->stream_index == sound.index)
            duration = checked::sum(duration, packet->duration);
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    return milliseconds(duration, sound.time_base);
}

bool isKnown(const AVFormatContext& context, int sound)
{
    return sound >= 0 && context.streams[sound]->codecpar->sample_rate > 0 &&
           context.streams[sound]->duration > 0;
}

int soundIn(AVFormatContext& context)
{
    return av_find_best_stream(&context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
}

void readSound(AVFormatContext& context, const AVStream& sound, std::int64_t bytes, ForeignMedia& media)
{
    constexpr AVRational unit{1, AV_TIME_BASE};
    media.sound.sampleRate = sound.codecpar->sample_rate;
    media.sound.milliseconds = milliseconds(sound.duration, sound.time_base);
    if (media.sound.milliseconds <= 0)
        media.sound.milliseconds = milliseconds(context.duration, unit);
    if (media.sound.milliseconds <= 0)
        media.sound.milliseconds = lengthOfPackets(context, sound);
    media.sound.bitsPerSecond = sound.codecpar->bit_rate;
    if (media.sound.bitsPerSecond <= 0)
        media.sound.bitsPerSecond = checked::scaled(bytes, 8000, media.sound.milliseconds);
}

bool read(ForeignBytes& bytes, const char* kind, ForeignMedia& media)
{
    const BoundedMemory bounded;
    Demuxer demuxer(bytes);
    AVFormatContext* const context = demuxer.openAs(kind, mostStreams);
    if (!context)
        return false;
    context->probesize = longestGuess;
    // Decoders are asked only for what no header tells.
    if (!isKnown(*context, soundIn(*context)) && avformat_find_stream_info(context, nullptr) < 0)
        return false;
    const int sound = soundIn(*context);
    if (sound < 0 || !audiocore::isSampleRate(context->streams[sound]->codecpar->sample_rate))
        return false;
    readTags(*context, *context->streams[sound], media);
    readSound(*context, *context->streams[sound], bytes.size(), media);
    return !bytes.isInterrupted();
}
} // namespace

extern "C" ENGINE_DOOR const audiocore::LastWayDoor melodriftDemux;
const audiocore::LastWayDoor melodriftDemux = {read};
