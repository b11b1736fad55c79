#pragma once

#include <optional>
#include <string>

namespace base {
/// Whether the number stands for a character: within Unicode, and no surrogate half.
bool isCharacter(char32_t c);
/// Appends a character as UTF-8.
void appendUtf8(std::string& out, char32_t c);
/// UTF-32 to UTF-8; nothing when the text holds a surrogate half or a number that is no character.
std::optional<std::string> toUtf8(const std::u32string& text);
/// UTF-8 to UTF-32; what is no UTF-8 becomes U+FFFD.
std::u32string toUtf32(const std::string& text);

/// The year of whatever date the text holds: its four digits, or up to three that are all of the text.
/// Without leading zeros; empty when there is none and for 0.
std::string yearOf(const std::string& date);
/// The number before a "/", without blanks and leading zeros; empty for none and for 0.
std::string trackOf(const std::string& track);
} // namespace base
