#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace itunes {
/// The entities that a document type declares. References to external ones read as nothing.
class Entities
{
public:
    /// Takes the declarations out of a document type. False when entities are made of other declared ones, or
    /// they or their names are too long to be mere names for some text: what such a file would grow to has no
    /// bound.
    bool declare(std::string_view documentType);
    /// Appends what the name stands for; false when there is no such entity. After the first megabyte
    /// references read as nothing.
    bool append(std::string_view name, std::string& out);

private:
    bool declareOne(std::string_view declaration);

    std::map<std::string, std::string, std::less<>> m_values;
    std::size_t m_expanded = 0;
};

/// Appends the text that raw character data stands for, always valid UTF-8 of characters that XML allows:
/// references are resolved, control characters dropped, broken UTF-8, lone surrogate halves and what is no
/// character replaced, surrogate pairs joined, line ends made line feeds. A "&" that begins no reference
/// stands for itself.
void appendText(std::string_view raw, Entities& entities, std::string& out);
/// The same for the inside of a CDATA section: nothing is a reference.
void appendLiteral(std::string_view raw, std::string& out);
/// Whether raw character data stands for itself as it is.
bool isPlain(std::string_view raw);

/// Text as character data of an element. The text is what appendText makes.
std::string escaped(std::string_view text);
} // namespace itunes
