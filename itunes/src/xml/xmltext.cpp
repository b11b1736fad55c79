#include "xml/xmltext.h"

#include "base/text.h"
#include "xml/xmlgrammar.h"

#include <algorithm>
#include <array>
#include <cstring>

using itunes::Entities;

namespace {
constexpr std::size_t longestEntityName = 64;
constexpr std::size_t longestEntity = 4096;
constexpr std::size_t largestExpansion = 1024 * 1024;
constexpr std::uint32_t noReference = 0xFFFFFFFF;
constexpr const char* blanks = " \t\r\n";

bool isControl(std::uint32_t c)
{
    return c < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

constexpr std::array<bool, 256> plainBytes()
{
    std::array<bool, 256> plain = {};
    for (int c = 0x20; c < 0x80; ++c)
        plain[std::size_t(c)] = c != '&';
    plain['\t'] = true;
    plain['\n'] = true;
    return plain;
}

/// XML allows the last two numbers of every plane but the first.
bool isXmlCharacter(std::uint32_t c)
{
    return base::isCharacter(c) && c != 0xFFFE && c != 0xFFFF;
}

void appendCharacter(std::uint32_t c, std::string& out)
{
    if (!isXmlCharacter(c))
        base::appendUtf8(out, base::replacementCharacter);
    else if (!isControl(c))
        base::appendUtf8(out, c);
}

/// Copies the bytes of one character at `at`, or a replacement for what is none; where it goes on.
std::size_t appendBytes(std::string_view raw, std::size_t at, std::string& out)
{
    const base::Utf8Number read = base::utf8At(raw, at);
    if (read.size > 0 && isXmlCharacter(read.number))
        out.append(raw.substr(at, read.size));
    else
        base::appendUtf8(out, base::replacementCharacter);
    return at + (read.size > 0 ? read.size : 1);
}

/// The number of a reference such as "#65" or "#x41".
std::uint32_t referenceNumber(std::string_view name)
{
    if (name.size() < 2 || name[0] != '#')
        return noReference;
    const bool hexadecimal = name[1] == 'x' || name[1] == 'X';
    const std::string_view digits = name.substr(hexadecimal ? 2 : 1);
    std::uint32_t number = 0;
    for (const char digit : digits) {
        std::uint32_t value = 0;
        if (digit >= '0' && digit <= '9')
            value = std::uint32_t(digit - '0');
        else if (hexadecimal && (digit | 0x20) >= 'a' && (digit | 0x20) <= 'f')
            value = std::uint32_t((digit | 0x20) - 'a' + 10);
        else
            return noReference;
        number = number * (hexadecimal ? 16 : 10) + value;
        if (number > 0x10FFFF)
            number = 0x110000;
    }
    return digits.empty() ? noReference : number;
}

/// The name between "&" at `at` and ";"; empty when there is none near.
std::string_view referenceAt(std::string_view raw, std::size_t at)
{
    const std::string_view rest = raw.substr(at + 1, longestEntityName + 1);
    const std::size_t end = rest.find_first_of("; &<\n");
    return end == std::string_view::npos || rest[end] != ';' ? std::string_view() : rest.substr(0, end);
}

/// The low half that a reference right at `at` names; 0 for none.
std::uint32_t lowHalfAt(std::string_view raw, std::size_t at, std::size_t& end)
{
    if (at >= raw.size() || raw[at] != '&')
        return 0;
    const std::string_view name = referenceAt(raw, at);
    const std::uint32_t number = referenceNumber(name);
    end = at + name.size() + 2;
    return number >= 0xDC00 && number < 0xE000 ? number : 0;
}

/// The character that one of the names stands for which nobody has to declare; 0 for another name.
char knownCharacter(std::string_view name)
{
    static constexpr std::pair<std::string_view, char> known[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& [text, c] : known)
        if (name == text)
            return c;
    return 0;
}

/// Which references are resolved; others stand for themselves.
enum class Resolved { None, Numbers, NumbersAndKnown, All };

/// Appends what a name stands for; false for one that stands for itself.
bool appendNamed(std::string_view name, Resolved resolved, Entities* entities, std::string& out)
{
    const char known = resolved == Resolved::Numbers ? char(0) : knownCharacter(name);
    if (known)
        out += known;
    return known || (resolved == Resolved::All && entities->append(name, out));
}

/// Resolves the reference at `at`; where the text goes on.
std::size_t appendReference(std::string_view raw, std::size_t at, Resolved resolved, Entities* entities,
                            std::string& out)
{
    const std::string_view name = referenceAt(raw, at);
    const std::size_t end = at + name.size() + 2;
    const std::uint32_t number = referenceNumber(name);
    if (number != noReference) {
        std::size_t pairEnd = 0;
        const std::uint32_t low = number >= 0xD800 && number < 0xDC00 ? lowHalfAt(raw, end, pairEnd) : 0;
        appendCharacter(low ? 0x10000 + ((number - 0xD800) << 10) + (low - 0xDC00) : number, out);
        return low ? pairEnd : end;
    }
    if (!name.empty() && appendNamed(name, resolved, entities, out))
        return end;
    out += '&';
    return at + 1;
}

/// `entities` only count where all references are resolved.
void append(std::string_view raw, Resolved resolved, Entities* entities, std::string& out)
{
    for (std::size_t at = 0; at < raw.size();) {
        const auto c = static_cast<unsigned char>(raw[at]);
        if (c == '&' && resolved != Resolved::None) {
            at = appendReference(raw, at, resolved, entities, out);
        } else if (c >= 0x80) {
            at = appendBytes(raw, at, out);
        } else {
            const bool pair = c == '\r' && at + 1 < raw.size() && raw[at + 1] == '\n';
            if (c == '\r' && !pair)
                out += '\n';
            else if (!pair && !isControl(c))
                out += char(c);
            ++at;
        }
    }
}

/// Whether the text refers to anything that would have to be declared.
bool namesEntities(std::string_view text)
{
    for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
        const std::string_view name = referenceAt(text, at);
        if (!name.empty() && referenceNumber(name) == noReference && knownCharacter(name) == 0)
            return true;
    }
    return false;
}
} // namespace

bool Entities::declare(std::string_view documentType)
{
    constexpr std::string_view declaration = "<!ENTITY";
    for (std::size_t at = 0; at < documentType.size(); ++at) {
        if (documentType.substr(at, declaration.size()) == declaration &&
            !declareOne(documentType.substr(at + declaration.size())))
            return false;
        at = std::min(xml::passedEnd(documentType, at), documentType.size() - 1);
    }
    return true;
}

bool Entities::declareOne(std::string_view declaration)
{
    const std::size_t name = declaration.find_first_not_of(blanks);
    if (name == std::string_view::npos || declaration[name] == '%')
        return true;
    const std::size_t length = declaration.substr(name, longestEntityName + 1).find_first_of(" \t\r\n\"'>");
    if (length == std::string_view::npos)
        return false;
    const std::size_t value = declaration.find_first_not_of(blanks, name + length);
    if (value == std::string_view::npos)
        return true;
    std::string text;
    const char quote = declaration[value];
    if (quote == '"' || quote == '\'') {
        const std::string_view inside = declaration.substr(value + 1, longestEntity + 1);
        const std::size_t size = inside.find(quote);
        if (size == std::string_view::npos)
            return false;
        ::append(inside.substr(0, size), Resolved::Numbers, nullptr, text);
        if (namesEntities(text))
            return false;
    }
    m_values.emplace(declaration.substr(name, length), text);
    return true;
}

bool Entities::append(std::string_view name, std::string& out)
{
    const auto found = m_values.find(name);
    if (found == m_values.end())
        return false;
    m_expanded += found->second.size();
    if (m_expanded <= largestExpansion)
        ::append(found->second, Resolved::NumbersAndKnown, nullptr, out);
    return true;
}

void itunes::appendText(std::string_view raw, Entities& entities, std::string& out)
{
    append(raw, Resolved::All, &entities, out);
}

void itunes::appendLiteral(std::string_view raw, std::string& out)
{
    append(raw, Resolved::None, nullptr, out);
}

bool itunes::isPlain(std::string_view raw)
{
    static constexpr std::array<bool, 256> plain = plainBytes();
    return std::all_of(raw.begin(), raw.end(), [](char c) { return plain[static_cast<unsigned char>(c)]; });
}

std::string itunes::escaped(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (c == '&')
            out += "&#38;"; // as the music program writes it
        else if (c == '<')
            out += "&#60;";
        else if (c == '>')
            out += "&#62;";
        else if (c == '\r')
            out += "&#13;";
        else
            out += c;
    }
    return out;
}
