#include "xml/xmlgrammar.h"

using namespace itunes;

namespace {
constexpr std::size_t none = std::string_view::npos;

/// The index of the first byte from `at` on that is no blank.
std::size_t behindBlanks(std::string_view text, std::size_t at)
{
    while (at < text.size() && xml::isBlank(text[at]))
        ++at;
    return at;
}

/// The index behind the attribute at `at`; none when there is no sound one.
std::size_t behindAttribute(std::string_view text, std::size_t at)
{
    if (!xml::startsName(text[at]))
        return none;
    while (at < text.size() && xml::isNameByte(text[at]))
        ++at;
    at = behindBlanks(text, at);
    if (at == text.size() || text[at] != '=')
        return none;
    at = behindBlanks(text, at + 1);
    if (at == text.size() || (text[at] != '"' && text[at] != '\''))
        return none;
    const std::size_t close = text.find(text[at], at + 1);
    return close == none ? none : close + 1;
}
} // namespace

std::size_t xml::openTagEnd(std::string_view text)
{
    char quote = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const char c = text[i];
        if (quote ? c == quote : c == '"' || c == '\'')
            quote = quote ? char(0) : c;
        else if (c == '<')
            return 0;
        else if (c == '>' && !quote)
            return i;
    }
    return 0;
}

std::size_t xml::passedEnd(std::string_view text, std::size_t at)
{
    if (text[at] == '"' || text[at] == '\'')
        return text.find(text[at], at + 1);
    if (text[at] != '<')
        return at;
    const bool comment = text.substr(at, 4) == "<!--";
    if (!comment && text.substr(at, 2) != "<?")
        return at;
    const std::size_t end = comment ? text.find("-->", at + 4) : text.find("?>", at + 2);
    return end == none ? none : end + (comment ? 2 : 1);
}

std::size_t xml::documentTypeSize(std::string_view text)
{
    int brackets = 0;
    for (std::size_t i = 2; i < text.size(); ++i) {
        const std::size_t end = passedEnd(text, i);
        if (end == none)
            return 0;
        if (end > i)
            i = end;
        else if (text[i] == '[')
            ++brackets;
        else if (text[i] == ']')
            --brackets;
        else if (text[i] == '>' && brackets <= 0)
            return i + 1;
    }
    return 0;
}

bool xml::areAttributes(std::string_view text)
{
    std::size_t at = 0;
    while (at != none) {
        const std::size_t begin = behindBlanks(text, at);
        if (begin == text.size())
            return true;
        at = begin == at ? none : behindAttribute(text, begin);
    }
    return false;
}
