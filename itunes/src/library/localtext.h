#pragma once

#include <string>
#include <string_view>

namespace itunes {
/// UTF-8 without control characters, from UTF-8 that may be broken; null gives an empty text.
std::string cleanText(const char* utf8);
std::string cleanText(std::string_view utf8);
/// The same from a text in the local 8-bit encoding.
std::string cleanLocalText(const char* local);
/// A path in the local 8-bit encoding as UTF-8; where file names are bytes, as it is.
std::string localPath(const char* local);
} // namespace itunes
