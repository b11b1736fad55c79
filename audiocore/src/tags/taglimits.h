#pragma once

#include <cstddef>

namespace audiocore {
// What is taken of a file's tags at the most, whatever the file says. What goes beyond is left alone, unread.

/// Bytes of all that says one text, as they stand in the file.
constexpr unsigned int longestText = 64 * 1024;
/// The tag library's work on the genres of ID3v2 grows with their square.
constexpr unsigned int longestGenre = 4 * 1024;
/// What a field costs beside its bytes.
constexpr unsigned int costOfField = 64;
/// Bytes of one tag, and of all that one reading keeps: the largest picture and some more.
constexpr long mostTagBytes = 48l * 1024 * 1024;
/// Bytes of one tag that is written anew; larger ones are not edited.
constexpr long mostTagBytesWritten = 128l * 1024 * 1024;
/// Bytes of the texts in a tag whose fields are not looked at one by one.
constexpr unsigned int mostTextBytes = 1024 * 1024;
} // namespace audiocore
