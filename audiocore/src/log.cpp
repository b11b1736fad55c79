#include "log.h"

#include "audiocore/log.h"

#include <atomic>
#include <cstdio>

namespace {
void toStandardError(const char* line)
{
    std::fprintf(stderr, "%s\n", line);
}

std::atomic<AudioCoreLogSink> sink{toStandardError};
} // namespace

void SetAudioCoreLogSink(AudioCoreLogSink newSink)
{
    sink = newSink ? newSink : toStandardError;
}

void audiocore::logLine(const std::string& path, const std::string& reason)
{
    sink.load()((path + ": " + reason).c_str());
}
