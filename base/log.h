#pragma once

#include <string>

namespace base {
/// Receives one line of the log, UTF-8, without a line feed. Called on the thread that logs.
using LogSink = void (*)(const char* line);
/// Sets where log lines go; null: to the standard error stream, as before the first call. Any thread.
void setLogSink(LogSink sink);

/// Writes "path: reason" to the log.
void logLine(const std::string& path, const std::string& reason);
/// The same for where nothing may go further that goes wrong: "reason: fault", in plain words when even the
/// line does not find room.
void logFailure(const std::string& path, const char* reason, const char* fault) noexcept;
} // namespace base
