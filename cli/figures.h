#pragma once

#include <cstdint>
#include <string>

/// Figures as people read them.
namespace Figures {
/// "1.4 MB", by 1000; "999 bytes".
std::string size(std::uint64_t bytes);
/// "4:07", "1:04:07"; by whole seconds.
std::string length(std::uint64_t milliseconds);
/// "44.1 kHz".
std::string sampleRate(std::uint64_t hertz);
/// "192 kbit/s".
std::string bitRate(std::uint64_t bitsPerSecond);
/// "1,234".
std::string count(std::uint64_t number);
/// "1 song", "2,000 songs".
std::string count(std::uint64_t number, const char* one, const char* many);
} // namespace Figures
