#include "audiocore/log.h"

#include "base/log.h"

void SetAudioCoreLogSink(AudioCoreLogSink sink)
{
    base::setLogSink(sink);
}
