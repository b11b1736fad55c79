#include "identify/musicbrainz.h"

#include "base/text.h"
#include "identify/address.h"
#include "identify/cleantext.h"
#include "identify/genre.h"
#include "identify/jsonreading.h"
#include "identify/recordingquery.h"

#include <algorithm>

namespace json = audiocore::json;
namespace musicbrainz = audiocore::musicbrainz;

using audiocore::longestMilliseconds;
using musicbrainz::FoundRecording;
using musicbrainz::Release;

namespace {
constexpr std::size_t largestAnswer = 10 * 1024 * 1024;
constexpr std::size_t mostNamedReleases = 25; // with their recording
constexpr std::size_t mostFound = 50;         // recordings, of those that a search finds
constexpr std::size_t mostNames = 20;         // of an artist
constexpr std::size_t mostAlbums = 100;       // of a recording

/// The lower, the better.
enum class ReleaseKind { Album, OtherAlbum, Other, Compilation };

ReleaseKind kindOfGroup(const json::Value& group)
{
    bool plain = true;
    for (const json::Value& type : json::elements(json::member(group, "secondary-types"))) {
        if (type == "Compilation" || type == "DJ-mix" || type == "Mixtape/Street")
            return ReleaseKind::Compilation;
        plain = false;
    }
    if (json::text(group, "primary-type") != "Album")
        return ReleaseKind::Other;
    return plain ? ReleaseKind::Album : ReleaseKind::OtherAlbum;
}

/// A date for comparing: unknown parts come after all known ones.
std::string sortable(const std::string& date)
{
    std::string unknown = "9999-99-99";
    if (base::yearOf(date).empty() || date.size() > unknown.size())
        return unknown;
    return date + unknown.substr(date.size());
}

Release::Rank rankOf(const json::Value& release)
{
    return {json::text(release, "status") != "Official",
            int(kindOfGroup(json::member(release, "release-group"))), sortable(json::text(release, "date"))};
}

std::string placeOf(const json::Value& track)
{
    const double position = json::number(track, "position").value_or(0);
    if (position >= 1 && position < 10000)
        return std::to_string(int(position));
    return base::trackOf(json::text(track, "number"));
}

/// The place on its medium of the first track that the predicate takes.
template <class IsWanted>
std::string trackOn(const json::Value& release, IsWanted isWanted)
{
    for (const json::Value& medium : json::elements(json::member(release, "media")))
        for (const char* name : {"tracks", "track"})
            for (const json::Value& track : json::elements(json::member(medium, name))) {
                std::string place = isWanted(track) ? placeOf(track) : std::string();
                if (!place.empty())
                    return place;
            }
    return std::string();
}

std::string artistOf(const json::Value& entry)
{
    std::string credit;
    for (const json::Value& artist : json::elements(json::member(entry, "artist-credit"))) {
        const std::string name = json::text(artist, "name");
        credit += name.empty() ? json::text(json::member(artist, "artist"), "name") : name;
        const json::Value& join = json::member(artist, "joinphrase");
        if (join.is_string())
            credit += join.get_ref<const std::string&>(); // with the blanks around it
    }
    return audiocore::cleanText(credit);
}

std::string genreOf(const json::Value& release)
{
    const std::string own = audiocore::mostVotedGenre(release);
    return own.empty() ? audiocore::mostVotedGenre(json::member(release, "release-group")) : own;
}

std::string artistGenreOf(const json::Value& recording)
{
    for (const json::Value& credit : json::elements(json::member(recording, "artist-credit"))) {
        std::string genre = audiocore::mostVotedGenre(json::member(credit, "artist"));
        if (!genre.empty())
            return genre;
    }
    return std::string();
}

Release releaseOf(const json::Value& value)
{
    Release release;
    release.rank = rankOf(value);
    release.id = json::identifier(value, "id");
    release.title = json::text(value, "title");
    release.year = base::yearOf(json::text(value, "date"));
    if (release.year.empty())
        release.year = base::yearOf(json::text(json::member(value, "release-group"), "first-release-date"));
    // The one track that is named there is the recording's.
    release.track = trackOn(value, [](const json::Value&) { return true; });
    release.genre = genreOf(value);
    return release;
}

/// The best release that has a title.
std::optional<Release> bestOf(const std::vector<json::Value>& releases)
{
    std::optional<Release> best;
    for (const json::Value& value : releases)
        if (!json::text(value, "title").empty())
            musicbrainz::takeBetter(best, releaseOf(value));
    return best;
}

void addText(std::vector<std::string>& texts, std::size_t most, const std::string& text)
{
    if (!text.empty() && texts.size() < most && std::find(texts.begin(), texts.end(), text) == texts.end())
        texts.push_back(text);
}

/// The first artist by all of his names, the first two together, and so on.
std::vector<std::string> artistsOf(const json::Value& recording)
{
    std::vector<std::string> names;
    std::string together;
    for (const json::Value& credit : json::elements(json::member(recording, "artist-credit"))) {
        const bool isFirst = together.empty();
        const json::Value& artist = json::member(credit, "artist");
        together += (isFirst ? "" : " ") + json::text(credit, "name");
        together = audiocore::cleanText(together); // of many, the first ones
        addText(names, mostNames, together);
        if (!isFirst)
            continue;
        addText(names, mostNames, json::text(artist, "name"));
        addText(names, mostNames, json::text(artist, "sort-name"));
        for (const json::Value& alias : json::elements(json::member(artist, "aliases")))
            addText(names, mostNames, json::text(alias, "name"));
    }
    return names;
}

bool isOfConcert(const json::Value& release)
{
    const json::Value& group = json::member(release, "release-group");
    const std::vector<json::Value>& types = json::elements(json::member(group, "secondary-types"));
    return std::find(types.begin(), types.end(), "Live") != types.end();
}

FoundRecording foundRecording(const json::Value& value)
{
    const std::vector<json::Value>& releases = json::elements(json::member(value, "releases"));
    FoundRecording found;
    found.id = json::identifier(value, "id");
    found.title = json::text(value, "title");
    found.credit = artistOf(value);
    found.artists = artistsOf(value);
    found.comment = json::text(value, "disambiguation");
    found.score = std::clamp(json::number(value, "score").value_or(0), 0.0, 100.0) / 100;
    found.milliseconds =
        std::int64_t(std::clamp(json::number(value, "length").value_or(0), 0.0, double(longestMilliseconds)));
    for (const json::Value& release : releases)
        addText(found.albums, mostAlbums, json::text(release, "title"));
    found.isLive = !releases.empty() && std::all_of(releases.begin(), releases.end(), isOfConcert);
    found.release = bestOf(releases);
    return found;
}

audiocore::HttpRequest get(const audiocore::ServiceAddresses& addresses, const std::string& what)
{
    audiocore::HttpRequest request;
    request.address = addresses.musicBrainz + "/ws/2/" + what + "&fmt=json";
    request.largestAnswer = largestAnswer;
    return request;
}
} // namespace

std::string musicbrainz::Recording::year() const
{
    return release && !release->year.empty() ? release->year : firstYear;
}

std::string musicbrainz::Recording::genre() const
{
    std::string genre = ownGenre;
    if (genre.empty() && release)
        genre = release->genre;
    return capitalised(genre.empty() ? artistGenre : genre);
}

audiocore::HttpRequest musicbrainz::recordingRequest(const ServiceAddresses& addresses,
                                                     const std::string& recording)
{
    // Genres come with the recording, its releases and, as "artists" are asked for, its artists.
    return get(addresses,
               "recording/" + recording + "?inc=artists+artist-credits+releases+release-groups+media+genres");
}

musicbrainz::Recording musicbrainz::readRecording(const std::string& answer)
{
    Recording recording;
    const std::optional<json::Document> root = json::parse(answer);
    if (!root)
        return recording;
    const std::vector<json::Value>& releases = json::elements(json::member(root->value(), "releases"));
    recording.id = json::identifier(root->value(), "id");
    recording.title = json::text(root->value(), "title");
    recording.understood = !recording.title.empty();
    recording.artist = artistOf(root->value());
    recording.firstYear = base::yearOf(json::text(root->value(), "first-release-date"));
    recording.ownGenre = mostVotedGenre(root->value());
    recording.artistGenre = artistGenreOf(root->value());
    recording.release = bestOf(releases);
    recording.hasMoreReleases = releases.size() >= mostNamedReleases;
    return recording;
}

audiocore::HttpRequest musicbrainz::searchRequest(const ServiceAddresses& addresses, const std::string& query)
{
    return get(addresses, "recording?query=" + percentEncoded(query) + "&limit=" + std::to_string(mostFound));
}

musicbrainz::Search musicbrainz::readSearch(const std::string& answer)
{
    Search search;
    const std::optional<json::Document> root = json::parse(answer);
    if (!root)
        return search;
    const json::Value& recordings = json::member(root->value(), "recordings");
    search.understood = recordings.is_array();
    for (const json::Value& recording : json::elements(recordings)) {
        FoundRecording found = foundRecording(recording);
        if (!found.id.empty() && !found.title.empty() && search.recordings.size() < mostFound)
            search.recordings.push_back(std::move(found));
    }
    return search;
}

audiocore::HttpRequest musicbrainz::releasesRequest(const ServiceAddresses& addresses,
                                                    const std::string& recording, ReleaseFilter filter,
                                                    std::size_t offset)
{
    return get(addresses, "release?recording=" + recording +
                              (filter == ReleaseFilter::Official ? "&status=official" : "") +
                              "&inc=release-groups&limit=100&offset=" + std::to_string(offset));
}

musicbrainz::ReleasePage musicbrainz::readReleases(const std::string& answer)
{
    ReleasePage page;
    const std::optional<json::Document> root = json::parse(answer);
    if (!root)
        return page;
    const json::Value& releases = json::member(root->value(), "releases");
    page.understood = releases.is_array();
    page.releases = json::elements(releases).size();
    page.all = json::number(root->value(), "release-count").value_or(0);
    page.best = bestOf(json::elements(releases));
    return page;
}

audiocore::HttpRequest musicbrainz::releaseRequest(const ServiceAddresses& addresses,
                                                   const std::string& release)
{
    return get(addresses, "release/" + release + "?inc=recordings+release-groups+genres");
}

bool musicbrainz::readTracks(Release& release, const std::string& answer, const std::string& recording)
{
    const std::optional<json::Document> root = json::parse(answer);
    if (!root || json::text(root->value(), "title").empty())
        return false;
    release.genre = genreOf(root->value());
    release.track = trackOn(root->value(), [&recording](const json::Value& track) {
        return json::identifier(json::member(track, "recording"), "id") == recording;
    });
    return true;
}

void musicbrainz::takeBetter(std::optional<Release>& best, const std::optional<Release>& other)
{
    if (other && (!best || other->rank < best->rank))
        best = other;
}

std::string musicbrainz::readError(const std::string& answer)
{
    const std::optional<json::Document> root = json::parse(answer);
    return root ? json::text(root->value(), "error") : std::string();
}
