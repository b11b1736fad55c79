#pragma once

#include <string>

namespace audiocore {
/// Writes "reason: path" to the library's log.
void logLine(const std::string& path, const std::string& reason);
/// The same for where nothing may go further that goes wrong: "reason: fault", in plain words when even the
/// line does not find room.
void logFailure(const std::string& path, const char* reason, const char* fault) noexcept;
} // namespace audiocore
