#include "collection/glob.h"

#include "base/text.h"

#include <algorithm>

Glob::Glob(const std::string& pattern, std::string& wrong)
    : m_wholePath(pattern.find('/') != std::string::npos)
{
    wrong = parse(base::nameToUtf32(pattern));
}

std::string Glob::parse(const std::u32string& pattern)
{
    using Kind = Part::Kind;
    if (pattern.empty())
        return "it is empty";
    // A leading "/" only says that the pattern begins right below the folder.
    for (std::size_t at = pattern.front() == '/' ? 1 : 0; at < pattern.size(); ++at) {
        const char32_t c = pattern[at];
        Part part{Kind::Character, c, {}};
        if (c == '?') {
            part.kind = Kind::One;
        } else if (c == '*') {
            const bool isDouble = at + 1 < pattern.size() && pattern[at + 1] == '*';
            part.kind = isDouble ? Kind::AnyPath : Kind::Any;
            at += isDouble ? 1 : 0;
        } else if (c == '[') {
            std::string wrong = parseSet(pattern, at, part);
            if (!wrong.empty())
                return wrong;
        } else if (c == '\\') {
            if (++at == pattern.size())
                return "nothing follows the backslash at its end";
            part.character = pattern[at];
        }
        m_parts.push_back(part);
    }
    return std::string();
}

/// From the bracket at `at` to the one that closes it.
std::string Glob::parseSet(const std::u32string& pattern, std::size_t& at, Part& set)
{
    const bool isNegated = at + 1 < pattern.size() && (pattern[at + 1] == '!' || pattern[at + 1] == '^');
    set.kind = isNegated ? Part::Kind::NoneOf : Part::Kind::OneOf;
    const std::size_t begin = at + (isNegated ? 2 : 1);
    for (at = begin; at < pattern.size(); ++at) {
        if (pattern[at] == ']' && at > begin) // the first one is of the set
            return std::string();
        const bool isRange = at + 2 < pattern.size() && pattern[at + 1] == '-' && pattern[at + 2] != ']';
        const char32_t last = pattern[at + (isRange ? 2 : 0)];
        if (last < pattern[at])
            return "a range in brackets runs backwards";
        set.ranges.emplace_back(pattern[at], last);
        at += isRange ? 2 : 0;
    }
    return "\"[\" is not closed by \"]\"";
}

bool Glob::Part::takes(char32_t c) const
{
    const bool isInSet = std::any_of(ranges.begin(), ranges.end(), [c](const auto& range) {
        return c >= range.first && c <= range.second;
    });
    switch (kind) {
    case Kind::Character:
        return c == character;
    case Kind::OneOf:
        return isInSet;
    case Kind::NoneOf:
        return !isInSet && c != '/';
    case Kind::AnyPath:
        return true;
    default:
        return c != '/';
    }
}

/// Adds to the places in the pattern those that are reached without a further character.
void Glob::follow(std::vector<char>& places) const
{
    for (std::size_t i = 0; i < m_parts.size(); ++i)
        if (places[i] && m_parts[i].repeats())
            places[i + 1] = 1;
}

bool Glob::matches(const std::string& path) const
{
    const std::string text = m_wholePath ? path : path.substr(path.rfind('/') + 1);
    // All places at once: no pattern makes it slow.
    std::vector<char> places(m_parts.size() + 1, 0);
    places[0] = 1;
    follow(places);
    for (const char32_t c : base::nameToUtf32(text)) {
        std::vector<char> next(places.size(), 0);
        for (std::size_t i = 0; i < m_parts.size(); ++i)
            if (places[i] && m_parts[i].takes(c))
                next[m_parts[i].repeats() ? i : i + 1] = 1;
        places.swap(next);
        follow(places);
    }
    return places.back() != 0;
}
