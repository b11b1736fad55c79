#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// What single pieces of XML look like, whatever surrounds them.
namespace itunes::xml {
inline bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

constexpr std::array<bool, 256> nameBytes()
{
    std::array<bool, 256> named = {};
    for (int c = 0; c < 256; ++c)
        named[std::size_t(c)] = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                                c == '_' || c == ':' || c == '-' || c == '.' || c >= 0x80;
    return named;
}

inline bool isNameByte(char c)
{
    static constexpr std::array<bool, 256> named = nameBytes();
    return named[static_cast<unsigned char>(c)];
}

inline bool startsName(char c)
{
    return isNameByte(c) && c != '-' && c != '.' && !(c >= '0' && c <= '9');
}

/// The index of the ">" that ends the opening tag at the text's beginning; 0 when there is none, or another
/// tag before it.
std::size_t openTagEnd(std::string_view text);
/// The index of the last byte of the quoted text, comment or instruction at `at` of a document type; `at`
/// where none begins, npos for one that does not end.
std::size_t passedEnd(std::string_view text, std::size_t at);
/// The number of bytes of the document type at the text's beginning; 0 when it does not end.
std::size_t documentTypeSize(std::string_view text);
/// Whether what stands between a tag's name and its end are attributes.
bool areAttributes(std::string_view text);
} // namespace itunes::xml
