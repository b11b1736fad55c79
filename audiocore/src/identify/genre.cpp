#include "identify/genre.h"

#include <algorithm>
#include <array>

namespace json = audiocore::json;

namespace {
bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '\'' ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// Words that stay small inside a title.
bool isSmallWord(const std::string& word)
{
    static const std::array<const char*, 8> small = {"a", "an", "and", "n", "of", "on", "the", "to"};
    return std::find(small.begin(), small.end(), word) != small.end();
}

/// Makes the letter at the place a capital, if it is one of the Latin alphabet.
void capitalise(std::string& text, std::size_t at)
{
    const auto byte = [&text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
    };
    if (byte(at) >= 'a' && byte(at) <= 'z')
        text[at] = char(byte(at) - 'a' + 'A');
    else if (byte(at) == 0xC3 && byte(at + 1) >= 0xA0 && byte(at + 1) <= 0xBE && byte(at + 1) != 0xB7)
        text[at + 1] = char(byte(at + 1) - 0x20);
}
} // namespace

std::string audiocore::mostVotedGenre(const json::Value& entry)
{
    std::string best;
    double most = 0;
    for (const json::Value& genre : json::elements(json::member(entry, "genres"))) {
        const std::string name = json::text(genre, "name");
        const double votes = json::number(genre, "count").value_or(0);
        if (name.empty() || votes < 0 || (!best.empty() && votes <= most))
            continue;
        best = name;
        most = votes;
    }
    return best;
}

std::string audiocore::capitalised(const std::string& genre)
{
    std::string result = genre;
    for (std::size_t begin = 0; begin < result.size();) {
        std::size_t end = begin;
        while (end < result.size() && isLetter(result[end]))
            ++end;
        // Only words between blanks are small: the "n" of "r'n'b" and the "a" of "a cappella" are not.
        const bool inside =
            begin > 0 && result[begin - 1] == ' ' && end < result.size() && result[end] == ' ';
        if (end > begin && !(inside && isSmallWord(result.substr(begin, end - begin))))
            capitalise(result, begin);
        begin = end + 1;
    }
    return result;
}
