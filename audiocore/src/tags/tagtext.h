#pragma once

#include <taglib/tbytevector.h>

#include <string>

namespace audiocore {
/// Bytes that should be UTF-8, as UTF-8: what older programs left is taken as Windows-1252.
std::string readableText(const TagLib::ByteVector& bytes);
/// "/12" of "3/12", empty without a total.
std::string totalOf(const std::string& track);
/// Whether the texts are the same in ASCII, capital or small.
bool sameName(const std::string& one, const std::string& other);
} // namespace audiocore
