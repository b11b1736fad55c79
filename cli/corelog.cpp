#include "cli/corelog.h"

#include "audiocore/log.h"

#include <atomic>
#include <cstdio>
#include <utility>

namespace {
std::atomic<bool> isShown{false};
thread_local std::string last;

void take(const char* line)
{
    last = line;
    if (isShown)
        std::fprintf(stderr, "melodrift-cli: %s\n", line);
}
} // namespace

void CoreLog::hold(bool isWanted)
{
    isShown = isWanted;
    SetAudioCoreLogSink(take);
}

std::string CoreLog::takeLast()
{
    return std::exchange(last, std::string());
}
