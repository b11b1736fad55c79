#include "tags/tagkind.h"

#include <taglib/audioproperties.h>

audiocore::MpegStream audiocore::soundTold(const TagLib::AudioProperties* properties)
{
    MpegStream sound;
    if (!properties)
        return sound;
    sound.sampleRate = properties->sampleRate();
    if (properties->lengthInMilliseconds() <= 0)
        return sound;
    sound.milliseconds = properties->lengthInMilliseconds();
    sound.bitsPerSecond = std::int64_t(properties->bitrate()) * 1000;
    return sound;
}
