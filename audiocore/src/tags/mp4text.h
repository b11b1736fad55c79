#pragma once

#include <taglib/tbytevector.h>

#include <string>

/// Plain texts of MP4 files, which stand right beside other things: a size, a language, and the text, once
/// for each language.
namespace audiocore {
/// The first text in the content of an atom, as UTF-8. Some writers leave out what should be in front of it.
std::string mp4PlainText(const TagLib::ByteVector& content);
/// The content of an atom with this text, of the language of the old one where that can hold it. Empty for
/// one that is too long.
TagLib::ByteVector mp4PlainContent(const std::string& text, const TagLib::ByteVector& old);
} // namespace audiocore
