#pragma once

#include <string>

namespace audiocore {
/// The text on one line without blanks around it, and without characters that control how others are shown;
/// what stands behind the first 1000 characters is cut off.
std::string cleanText(const std::string& text);
} // namespace audiocore
