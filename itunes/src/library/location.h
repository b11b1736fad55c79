#pragma once

#include <string>
#include <string_view>

namespace itunes {
/// A file URL of any form, or a bare path, with the 16-character prefix "file://localhost"; empty for what
/// names no file.
std::string normalisedLocation(std::string_view url);
/// The path that a normalised location names, UTF-8; empty for none.
std::string pathOf(std::string_view location);
/// At most so many bytes of the location; neither a character nor the escapes of one are torn.
std::string_view cutLocation(std::string_view location, std::size_t bytes);
} // namespace itunes
