#include "identify/recordingquery.h"

#include "base/text.h"
#include "identify/foldedtext.h"

#include <algorithm>

namespace {
constexpr std::size_t longestPhrase = 100; // characters
constexpr std::size_t mostWords = 8;
constexpr std::size_t longestWord = 24; // characters
constexpr std::size_t shortestBlurred = 4;

/// The characters of the syntax are meant as themselves.
std::string escaped(const std::u32string& text)
{
    static const std::u32string special = U"+-&|!(){}[]^\"~*?:\\/";
    std::string result;
    for (const char32_t c : text) {
        if (special.find(c) != std::u32string::npos)
            result += '\\';
        base::appendUtf8(result, c);
    }
    return result;
}

bool isOperator(const std::u32string& word)
{
    return word == U"and" || word == U"or" || word == U"not" || word == U"to";
}

/// The text as it stands, or any of its words, the longer ones also with other letters.
std::string clause(const char* field, const std::string& text)
{
    std::string result =
        std::string(field) + ":(\"" + escaped(base::toUtf32(text).substr(0, longestPhrase)) + '"';
    std::vector<std::u32string> words = audiocore::wordsOf(audiocore::folded(text));
    words.erase(std::remove_if(words.begin(), words.end(), isOperator), words.end());
    words.resize(std::min(words.size(), mostWords));
    for (const std::u32string& word : words) {
        result += " OR " + escaped(word.substr(0, longestWord));
        if (word.size() >= shortestBlurred)
            result += '~';
    }
    return result + ')';
}
} // namespace

std::string audiocore::recordingQuery(const SongHints& hints)
{
    const SongNames& names = hints.names;
    if (names.title.empty() || (names.artist.empty() && names.album.empty()))
        return std::string();
    std::string query = '+' + clause("recording", names.title);
    if (!names.artist.empty())
        query += " +" + clause("artist", names.artist);
    if (!names.album.empty())
        query += (names.artist.empty() ? " +" : " ") + clause("release", names.album);
    if (hints.milliseconds > 0 && hints.milliseconds < audiocore::longestMilliseconds)
        query += " dur:[" +
                 std::to_string(std::max(hints.milliseconds - mostMillisecondsApart, std::int64_t(0))) +
                 " TO " + std::to_string(hints.milliseconds + mostMillisecondsApart) + ']';
    return query;
}
