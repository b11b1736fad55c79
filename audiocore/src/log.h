#pragma once

#include <string>

namespace audiocore {
/// Writes "reason: path" to the library's log.
void logLine(const std::string& path, const std::string& reason);
} // namespace audiocore
