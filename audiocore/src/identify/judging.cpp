#include "identify/judging.h"

#include "identify/foldedtext.h"
#include "identify/recordingquery.h"
#include "identify/songtitle.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

using audiocore::SongHints;
using audiocore::SongTitle;
using audiocore::Version;
using audiocore::musicbrainz::FoundRecording;

namespace {
constexpr double leastTitle = 0.85;
constexpr double leastArtist = 0.8;
constexpr double leastAlbum = 0.85;
constexpr double leastFit = 0.84;
constexpr double asWell = 0.03;

constexpr double titleWeight = 40;
constexpr double artistWeight = 30;
constexpr double lengthWeight = 15;
constexpr double albumWeight = 10;
constexpr double scoreWeight = 5;

std::vector<std::u32string> numbersIn(const std::u32string& text)
{
    std::vector<std::u32string> numbers;
    for (const std::u32string& word : audiocore::wordsOf(text))
        if (word.find_first_not_of(U"0123456789") == std::u32string::npos)
            numbers.push_back(word);
    return numbers;
}

double titleCloseness(const SongTitle& one, const SongTitle& other)
{
    return numbersIn(one.plain) == numbersIn(other.plain) ? audiocore::closeness(one.plain, other.plain) : 0;
}

bool joinsArtists(const std::u32string& word)
{
    for (const char32_t* const one : {U"the", U"and", U"feat", U"ft", U"featuring", U"with", U"vs"})
        if (word == one)
            return true;
    return false;
}

/// Folded, without what joins several and without articles.
std::u32string artistText(const std::string& artist)
{
    std::u32string result;
    for (const std::u32string& word : audiocore::wordsOf(audiocore::folded(artist)))
        if (!joinsArtists(word))
            result += (result.empty() ? U"" : U" ") + word;
    return result.empty() ? audiocore::folded(artist) : result; // "The The"
}

/// The first of several.
std::string firstArtist(const std::string& artists)
{
    std::size_t end = artists.size();
    for (const char* const sign : {",", ";", " & ", " / ", " feat", " Feat", " ft", " Ft"})
        end = std::min(end, artists.find(sign, 1));
    return artists.substr(0, end);
}

double artistCloseness(const FoundRecording& recording, const std::string& artist)
{
    const std::u32string all = artistText(artist);
    const std::u32string first = artistText(firstArtist(artist));
    double close = audiocore::closeness(all, artistText(recording.credit));
    for (const std::string& name : recording.artists) {
        const std::u32string text = artistText(name);
        close = std::max({close, audiocore::closeness(all, text), audiocore::closeness(first, text)});
    }
    return close;
}

double albumCloseness(const FoundRecording& recording, const std::string& album)
{
    const SongTitle own = audiocore::songTitle(album);
    double close = 0;
    for (const std::string& name : recording.albums) {
        const SongTitle other = audiocore::songTitle(name);
        if (other.versions == own.versions)
            close = std::max(close, titleCloseness(own, other));
    }
    return close;
}

bool areKnown(const FoundRecording& recording, const SongHints& hints)
{
    return recording.milliseconds > 0 && hints.milliseconds > 0;
}

std::int64_t apart(const FoundRecording& recording, const SongHints& hints)
{
    return std::abs(recording.milliseconds - hints.milliseconds);
}

double lengthCloseness(const FoundRecording& recording, const SongHints& hints)
{
    if (!areKnown(recording, hints))
        return 0;
    return 1 - double(apart(recording, hints)) / (2 * double(audiocore::mostMillisecondsApart));
}

std::set<Version> versionsOf(const FoundRecording& recording, const SongTitle& title)
{
    std::set<Version> versions = title.versions;
    versions.merge(audiocore::versionsNamed(recording.comment));
    if (recording.isLive)
        versions.insert(Version::Live);
    return versions;
}

bool isOtherVersion(const std::set<Version>& versions, const SongTitle& title, const std::string& album,
                    bool isOnAlbum)
{
    const auto has = [](const std::set<Version>& all, const std::set<Version>& some) {
        return std::includes(all.begin(), all.end(), some.begin(), some.end());
    };
    if (!has(versions, title.versions))
        return true;
    if (isOnAlbum)
        return false;
    std::set<Version> named = audiocore::versionsNamed(album);
    const bool wantsLive = named.count(Version::Live) > 0;
    named.insert(title.versions.begin(), title.versions.end());
    return wantsLive || versions.count(Version::Live) > 0 || !has(named, versions);
}

bool isFarOff(const FoundRecording& recording, const SongHints& hints, double title, double artist,
              bool isOnAlbum)
{
    if (areKnown(recording, hints) && apart(recording, hints) > audiocore::mostMillisecondsApart)
        return true;
    const bool isByArtist =
        hints.names.artist.empty() ? isOnAlbum && areKnown(recording, hints) : artist >= leastArtist;
    return title < leastTitle || !isByArtist;
}
} // namespace

double audiocore::fitOf(const FoundRecording& recording, const SongHints& hints)
{
    const SongNames& names = hints.names;
    const SongTitle title = songTitle(names.title);
    const SongTitle own = songTitle(recording.title);
    const double titleClose = titleCloseness(title, own);
    const double artistClose = artistCloseness(recording, names.artist);
    const double albumClose = albumCloseness(recording, names.album);
    const bool isOnAlbum = albumClose >= leastAlbum;
    if (isFarOff(recording, hints, titleClose, artistClose, isOnAlbum) ||
        isOtherVersion(versionsOf(recording, own), title, names.album, isOnAlbum))
        return 0;
    const double ofArtist = names.artist.empty() ? 0 : artistWeight;
    const double ofAlbum = names.album.empty() ? 0 : albumWeight;
    const double sum = titleWeight * titleClose + ofArtist * artistClose + ofAlbum * albumClose +
                       lengthWeight * lengthCloseness(recording, hints) + scoreWeight * recording.score;
    return sum / (titleWeight + ofArtist + ofAlbum + lengthWeight + scoreWeight);
}

const FoundRecording* audiocore::chooseFitting(const std::vector<FoundRecording>& recordings,
                                               const SongHints& hints)
{
    std::vector<double> fits;
    fits.reserve(recordings.size());
    for (const FoundRecording& recording : recordings)
        fits.push_back(fitOf(recording, hints));
    const double most = fits.empty() ? 0 : *std::max_element(fits.begin(), fits.end());
    if (most < leastFit)
        return nullptr;
    using Rank = std::tuple<bool, musicbrainz::Release::Rank, double>; // the lower, the better
    const FoundRecording* best = nullptr;
    Rank bestRank;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        const auto& release = recordings[i].release;
        const Rank rank = {!release, release ? release->rank : musicbrainz::Release::Rank(), -fits[i]};
        if (fits[i] < std::max(leastFit, most - asWell) || (best && rank >= bestRank))
            continue;
        best = &recordings[i];
        bestRank = rank;
    }
    return best;
}
