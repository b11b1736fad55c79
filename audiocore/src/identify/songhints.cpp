#include "identify/songhints.h"

#include "base/text.h"
#include "identify/cleantext.h"
#include "identify/foldedtext.h"
#include "tags/parsedmedia.h"

#include <algorithm>

using audiocore::isOneOf;
using audiocore::SongNames;

namespace {
bool isTrackNumber(const std::u32string& folded)
{
    const std::vector<std::u32string> words = audiocore::wordsOf(folded);
    return words.size() == 2 &&
           isOneOf(words[0], {U"track", U"audiotrack", U"titel", U"spur", U"piste", U"pista"}) &&
           words[1].find_first_not_of(U"0123456789") == std::u32string::npos;
}

void clearIf(bool saysNothing, std::string& text)
{
    if (saysNothing)
        text.clear();
}

SongNames withoutPlaceholders(SongNames names)
{
    const std::u32string title = audiocore::folded(names.title);
    clearIf(isTrackNumber(title) || isOneOf(title, {U"unknown", U"unknown title", U"untitled"}), names.title);
    clearIf(isOneOf(audiocore::folded(names.artist),
                    {U"unknown", U"unknown artist", U"various", U"various artists", U"va", U"compilations"}),
            names.artist);
    clearIf(isOneOf(audiocore::folded(names.album), {U"unknown", U"unknown album", U"untitled"}),
            names.album);
    return names;
}

bool areSame(const std::string& one, const std::string& other)
{
    return !one.empty() && audiocore::folded(one) == audiocore::folded(other);
}

void fill(std::string& text, const std::string& guessed)
{
    if (text.empty())
        text = guessed;
}
} // namespace

SongNames audiocore::completed(const SongNames& tagged, const std::string& path)
{
    SongNames names = withoutPlaceholders(tagged);
    if (!names.title.empty() && !names.artist.empty())
        return names;
    SongNames guess = withoutPlaceholders(namesInPath(path));
    if (areSame(names.artist, guess.title) || areSame(names.title, guess.artist)) // "Title - Artist"
        std::swap(guess.title, guess.artist);
    fill(names.title, guess.title);
    fill(names.artist, guess.artist);
    fill(names.album, guess.album);
    return names;
}

audiocore::SongHints audiocore::hintsOf(const std::string& path)
{
    const auto media = parsedMedia(path);
    const auto& texts = media->content.texts;
    const auto text = [&texts](TagItemType type) { return cleanText(texts[std::size_t(type)]); };
    return {completed({text(TAG_TITLE), text(TAG_ARTIST), text(TAG_ALBUM)}, base::shownName(path)),
            media->properties.milliseconds};
}
