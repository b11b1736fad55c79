#pragma once

#include <initializer_list>
#include <string>
#include <vector>

/// Texts as people compare them.
namespace audiocore {
/// UTF-8 in small letters without accents, its words parted by one blank: apostrophes are left out, "&" is
/// "and", all other signs are blanks. A text of signs alone stays as it is. Letters of the Latin, Greek and
/// Cyrillic scripts; those of others stay as they are.
std::u32string folded(const std::string& text);

bool isOneOf(const std::u32string& folded, std::initializer_list<const char32_t*> texts);

std::vector<std::u32string> wordsOf(const std::u32string& folded);

/// 1 for equal texts, 0 for those with little in common: one less the share of letters that would have to be
/// put in, left out, exchanged or swapped with the next. Two empty texts are not close. What stands behind
/// the first 128 letters does not count.
double closeness(const std::u32string& one, const std::u32string& other);
} // namespace audiocore
