#include "base/log.h"

#include "base/text.h"

#include <atomic>
#include <cstdio>
#include <new>

namespace {
void toStandardError(const char* line)
{
    std::fprintf(stderr, "%s\n", line);
}

std::atomic<base::LogSink> sink{toStandardError};
} // namespace

void base::setLogSink(LogSink newSink)
{
    sink = newSink ? newSink : toStandardError;
}

void base::logLine(const std::string& path, const std::string& reason)
{
    // A name may be no text, and the line is one.
    sink.load()((shownName(path) + ": " + reason).c_str());
}

void base::logFailure(const std::string& path, const char* reason, const char* fault) noexcept
{
    try {
        logLine(path, std::string(reason) + ": " + fault);
    } catch (const std::bad_alloc&) {
        // Standard error needs no memory.
        std::fprintf(stderr, "%s: %s: %s\n", path.c_str(), reason, fault);
    }
}
