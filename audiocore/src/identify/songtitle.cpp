#include "identify/songtitle.h"

#include "identify/foldedtext.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <vector>

using audiocore::isOneOf;
using audiocore::SongTitle;
using audiocore::Version;

namespace {
using Words = std::vector<std::u32string>;

const std::map<std::u32string, Version>& versionWords()
{
    static const std::map<std::u32string, Version> words = {
        {U"live", Version::Live},         {U"unplugged", Version::Live},
        {U"concert", Version::Live},      {U"remix", Version::Remix},
        {U"rmx", Version::Remix},         {U"mix", Version::Remix},
        {U"dub", Version::Remix},         {U"acoustic", Version::Acoustic},
        {U"demo", Version::Demo},         {U"rehearsal", Version::Demo},
        {U"karaoke", Version::Karaoke},   {U"instrumental", Version::Instrumental},
        {U"cover", Version::Cover},       {U"tribute", Version::Cover},
        {U"session", Version::Session},   {U"sessions", Version::Session},
        {U"acapella", Version::Acoustic}, {U"cappella", Version::Acoustic},
    };
    return words;
}

bool isNumber(const std::u32string& word)
{
    return word.find_first_not_of(U"0123456789") == std::u32string::npos;
}

bool announcesGuests(const std::u32string& word)
{
    return isOneOf(word, {U"feat", U"ft", U"featuring"});
}

/// Of an addition that makes no other recording.
bool isHarmless(const std::u32string& word)
{
    return isNumber(word) ||
           isOneOf(word,
                   {U"remaster", U"remastered", U"remastering", U"digital", U"digitally", U"album",
                    U"single",   U"radio",      U"edit",        U"version", U"original",  U"mix",
                    U"mono",     U"stereo",     U"explicit",    U"clean",   U"bonus",     U"track",
                    U"deluxe",   U"expanded",   U"edition",     U"limited", U"special",   U"anniversary",
                    U"ep",       U"reissue",    U"disc",        U"cd",      U"the"});
}

std::set<Version> versionsOf(const Words& words)
{
    std::set<Version> versions;
    if (std::all_of(words.begin(), words.end(), isHarmless)) // "Original Mix"
        return versions;
    for (const std::u32string& word : words) {
        const auto known = versionWords().find(word);
        if (known != versionWords().end())
            versions.insert(known->second);
    }
    return versions;
}

/// Notes what an addition says; whether it stays a part of the title.
bool staysInTitle(const std::string& addition, std::set<Version>& versions)
{
    const Words words = audiocore::wordsOf(audiocore::folded(addition));
    if (words.empty() || announcesGuests(words.front()) ||
        std::all_of(words.begin(), words.end(), isHarmless))
        return false;
    const std::set<Version> own = versionsOf(words);
    versions.insert(own.begin(), own.end());
    const bool nothingElse = std::all_of(words.begin(), words.end(), [](const std::u32string& word) {
        return isHarmless(word) || versionWords().count(word) > 0;
    });
    return !nothingElse && words.front() != U"live"; // whose remix it is tells it from others
}

/// Takes the additions in brackets out that are no part of the title.
std::string withoutBrackets(const std::string& title, std::set<Version>& versions)
{
    std::string result;
    for (std::size_t at = 0; at < title.size();) {
        const char close = title[at] == '(' ? ')' : title[at] == '[' ? ']' : '\0';
        const std::size_t end = close ? title.find(close, at) : std::string::npos;
        if (end == std::string::npos) {
            result += title[at++];
            continue;
        }
        const std::string addition = title.substr(at + 1, end - at - 1);
        if (staysInTitle(addition, versions))
            result += '(' + addition + ')';
        at = end + 1;
    }
    return result;
}

std::string withoutLastPart(const std::string& title, std::set<Version>& versions)
{
    const std::size_t dash = title.rfind(" - ");
    if (dash == std::string::npos || dash == 0 || staysInTitle(title.substr(dash + 3), versions))
        return title;
    return title.substr(0, dash);
}

std::u32string withDigits(const std::u32string& word)
{
    static const char32_t* const romans[] = {U"ii",   U"iii", U"iv", U"v",  U"vi", U"vii",
                                             U"viii", U"ix",  U"x",  U"xi", U"xii"};
    static const char32_t* const digits[] = {U"2", U"3", U"4",  U"5",  U"6", U"7",
                                             U"8", U"9", U"10", U"11", U"12"};
    for (std::size_t i = 0; i < std::size(romans); ++i)
        if (word == romans[i])
            return digits[i];
    return word;
}
} // namespace

SongTitle audiocore::songTitle(const std::string& title)
{
    SongTitle result;
    const std::string rest = withoutLastPart(withoutBrackets(title, result.versions), result.versions);
    Words words = wordsOf(folded(rest));
    if (words.empty())
        words = wordsOf(folded(title));
    const auto guests = std::find_if(words.begin(), words.end(), announcesGuests);
    if (guests != words.begin())
        words.erase(guests, words.end());
    for (const std::u32string& word : words)
        result.plain += (result.plain.empty() ? U"" : U" ") + withDigits(word);
    return result;
}

std::set<Version> audiocore::versionsNamed(const std::string& text)
{
    return versionsOf(wordsOf(folded(text)));
}
