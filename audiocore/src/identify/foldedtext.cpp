#include "identify/foldedtext.h"

#include "base/text.h"

#include <algorithm>
#include <array>

namespace {
constexpr std::size_t mostLetters = 128;
constexpr double leastCloseness = 0.5;

/// Characters that stand for the same letters.
struct Letters
{
    char32_t first;
    char32_t last;
    const char32_t* plain;
};

constexpr Letters plainLetters[] = {
    {0xAA, 0xAA, U"a"},     {0xBA, 0xBA, U"o"},     {0xC0, 0xC5, U"a"},     {0xC6, 0xC6, U"ae"},
    {0xC7, 0xC7, U"c"},     {0xC8, 0xCB, U"e"},     {0xCC, 0xCF, U"i"},     {0xD0, 0xD0, U"d"},
    {0xD1, 0xD1, U"n"},     {0xD2, 0xD6, U"o"},     {0xD8, 0xD8, U"o"},     {0xD9, 0xDC, U"u"},
    {0xDD, 0xDD, U"y"},     {0xDE, 0xDE, U"th"},    {0xDF, 0xDF, U"ss"},    {0xE0, 0xE5, U"a"},
    {0xE6, 0xE6, U"ae"},    {0xE7, 0xE7, U"c"},     {0xE8, 0xEB, U"e"},     {0xEC, 0xEF, U"i"},
    {0xF0, 0xF0, U"d"},     {0xF1, 0xF1, U"n"},     {0xF2, 0xF6, U"o"},     {0xF8, 0xF8, U"o"},
    {0xF9, 0xFC, U"u"},     {0xFD, 0xFD, U"y"},     {0xFE, 0xFE, U"th"},    {0xFF, 0xFF, U"y"},
    {0x100, 0x105, U"a"},   {0x106, 0x10D, U"c"},   {0x10E, 0x111, U"d"},   {0x112, 0x11B, U"e"},
    {0x11C, 0x123, U"g"},   {0x124, 0x127, U"h"},   {0x128, 0x131, U"i"},   {0x132, 0x133, U"ij"},
    {0x134, 0x135, U"j"},   {0x136, 0x138, U"k"},   {0x139, 0x142, U"l"},   {0x143, 0x14B, U"n"},
    {0x14C, 0x151, U"o"},   {0x152, 0x153, U"oe"},  {0x154, 0x159, U"r"},   {0x15A, 0x161, U"s"},
    {0x162, 0x167, U"t"},   {0x168, 0x173, U"u"},   {0x174, 0x175, U"w"},   {0x176, 0x178, U"y"},
    {0x179, 0x17E, U"z"},   {0x17F, 0x17F, U"s"},   {0x1A0, 0x1A1, U"o"},   {0x1AF, 0x1B0, U"u"},
    {0x1CD, 0x1CE, U"a"},   {0x1CF, 0x1D0, U"i"},   {0x1D1, 0x1D2, U"o"},   {0x1D3, 0x1DC, U"u"},
    {0x218, 0x219, U"s"},   {0x21A, 0x21B, U"t"},   {0x386, 0x386, U"α"},   {0x388, 0x388, U"ε"},
    {0x389, 0x389, U"η"},   {0x38A, 0x38A, U"ι"},   {0x38C, 0x38C, U"ο"},   {0x38E, 0x38E, U"υ"},
    {0x38F, 0x38F, U"ω"},   {0x390, 0x390, U"ι"},   {0x3AA, 0x3AA, U"ι"},   {0x3AB, 0x3AB, U"υ"},
    {0x3AC, 0x3AC, U"α"},   {0x3AD, 0x3AD, U"ε"},   {0x3AE, 0x3AE, U"η"},   {0x3AF, 0x3AF, U"ι"},
    {0x3B0, 0x3B0, U"υ"},   {0x3C2, 0x3C2, U"σ"},   {0x3CA, 0x3CA, U"ι"},   {0x3CB, 0x3CB, U"υ"},
    {0x3CC, 0x3CC, U"ο"},   {0x3CD, 0x3CD, U"υ"},   {0x3CE, 0x3CE, U"ω"},   {0x401, 0x401, U"е"},
    {0x451, 0x451, U"е"},   {0x1E00, 0x1E01, U"a"}, {0x1E02, 0x1E07, U"b"}, {0x1E08, 0x1E09, U"c"},
    {0x1E0A, 0x1E13, U"d"}, {0x1E14, 0x1E1D, U"e"}, {0x1E1E, 0x1E1F, U"f"}, {0x1E20, 0x1E21, U"g"},
    {0x1E22, 0x1E2B, U"h"}, {0x1E2C, 0x1E2F, U"i"}, {0x1E30, 0x1E35, U"k"}, {0x1E36, 0x1E3D, U"l"},
    {0x1E3E, 0x1E43, U"m"}, {0x1E44, 0x1E4B, U"n"}, {0x1E4C, 0x1E53, U"o"}, {0x1E54, 0x1E57, U"p"},
    {0x1E58, 0x1E5F, U"r"}, {0x1E60, 0x1E69, U"s"}, {0x1E6A, 0x1E71, U"t"}, {0x1E72, 0x1E7B, U"u"},
    {0x1E7C, 0x1E7F, U"v"}, {0x1E80, 0x1E89, U"w"}, {0x1E8A, 0x1E8D, U"x"}, {0x1E8E, 0x1E8F, U"y"},
    {0x1E90, 0x1E95, U"z"}, {0x1EA0, 0x1EB7, U"a"}, {0x1EB8, 0x1EC7, U"e"}, {0x1EC8, 0x1ECB, U"i"},
    {0x1ECC, 0x1EE3, U"o"}, {0x1EE4, 0x1EF1, U"u"}, {0x1EF2, 0x1EF9, U"y"},
};

bool isWithin(char32_t c, char32_t first, char32_t last)
{
    return c >= first && c <= last;
}

/// Capitals that stand so far before their small letters; full-width signs as the plain ones.
char32_t small(char32_t c)
{
    if (isWithin(c, 0xFF01, 0xFF5E))
        c -= 0xFEE0;
    if (isWithin(c, U'A', U'Z') || isWithin(c, 0x391, 0x3A9) || isWithin(c, 0x410, 0x42F))
        return c + 0x20;
    return isWithin(c, 0x400, 0x40F) ? c + 0x50 : c;
}

/// What is written above or between letters and is none.
bool isLeftOut(char32_t c)
{
    return c == U'\'' || c == U'`' || c == 0xB4 || c == 0x2BC || c == 0x2018 || c == 0x2019 ||
           isWithin(c, 0x300, 0x36F) || isWithin(c, 0x200B, 0x200F) || c == 0xFEFF;
}

bool isLetterOrDigit(char32_t c)
{
    if (c < 0x80)
        return isWithin(c, U'a', U'z') || isWithin(c, U'0', U'9');
    return !isWithin(c, 0x80, 0xBF) && c != 0xD7 && c != 0xF7 && !isWithin(c, 0x2000, 0x206F) &&
           !isWithin(c, 0x3000, 0x303F);
}

void append(std::u32string& text, char32_t c)
{
    const char32_t letter = small(c);
    if (isLeftOut(letter))
        return;
    for (const Letters& letters : plainLetters)
        if (isWithin(letter, letters.first, letters.last)) {
            text += letters.plain;
            return;
        }
    if (letter == U'&')
        text += U" and ";
    else
        text += isLetterOrDigit(letter) ? letter : U' ';
}

std::u32string withSingleBlanks(const std::u32string& text)
{
    std::u32string result;
    for (const std::u32string& word : audiocore::wordsOf(text))
        result += (result.empty() ? U"" : U" ") + word;
    return result;
}

/// How many letters differ; swapped neighbours are one.
std::size_t differences(const std::u32string& one, const std::u32string& other)
{
    using Row = std::array<std::size_t, mostLetters + 1>;
    Row before = {};
    Row last = {};
    Row row = {};
    for (std::size_t j = 0; j <= other.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= one.size(); ++i) {
        before = last;
        last = row;
        row[0] = i;
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const bool differ = one[i - 1] != other[j - 1];
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + std::size_t(differ)});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
    }
    return row[other.size()];
}
} // namespace

std::u32string audiocore::folded(const std::string& text)
{
    std::u32string result;
    for (const char32_t c : base::toUtf32(text))
        append(result, c);
    result = withSingleBlanks(result);
    return result.empty() ? withSingleBlanks(base::toUtf32(text)) : result;
}

std::vector<std::u32string> audiocore::wordsOf(const std::u32string& folded)
{
    std::vector<std::u32string> words;
    for (std::size_t begin = 0; begin < folded.size();) {
        const std::size_t end = std::min(folded.find(U' ', begin), folded.size());
        if (end > begin)
            words.push_back(folded.substr(begin, end - begin));
        begin = end + 1;
    }
    return words;
}

bool audiocore::isOneOf(const std::u32string& folded, std::initializer_list<const char32_t*> texts)
{
    return std::any_of(texts.begin(), texts.end(), [&folded](const char32_t* one) { return folded == one; });
}

double audiocore::closeness(const std::u32string& one, const std::u32string& other)
{
    const std::size_t shorter = std::min({one.size(), other.size(), mostLetters});
    const std::size_t longer = std::min(std::max(one.size(), other.size()), mostLetters);
    if (shorter == 0 || double(shorter) / double(longer) < leastCloseness)
        return 0;
    const std::size_t differ = differences(one.substr(0, mostLetters), other.substr(0, mostLetters));
    const double close = 1 - double(differ) / double(longer);
    return close < leastCloseness ? 0 : close;
}
