#include "identify/musicbrainz.h"

#include "identify/genre.h"
#include "identify/jsonreading.h"
#include "text.h"

#include <tuple>

namespace json = audiocore::json;
namespace musicbrainz = audiocore::musicbrainz;

namespace {
constexpr std::size_t largestAnswer = 10 * 1024 * 1024;

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
    const std::string unknown = "9999-99-99";
    if (audiocore::yearOf(date).empty() || date.size() > unknown.size())
        return unknown;
    return date + unknown.substr(date.size());
}

using Rank = std::tuple<bool, ReleaseKind, std::string>;

Rank rankOf(const json::Value& release)
{
    return {json::text(release, "status") != "Official", kindOfGroup(json::member(release, "release-group")),
            sortable(json::text(release, "date"))};
}

/// The best release that has a title; null when there is none.
const json::Value* chooseRelease(const json::Value& recording)
{
    const json::Value* best = nullptr;
    Rank bestRank;
    for (const json::Value& release : json::elements(json::member(recording, "releases"))) {
        const Rank rank = rankOf(release);
        if (json::text(release, "title").empty() || (best && rank >= bestRank))
            continue;
        best = &release;
        bestRank = rank;
    }
    return best;
}

/// The place on its medium of the one track that the service names there.
std::string trackOn(const json::Value& release)
{
    for (const json::Value& medium : json::elements(json::member(release, "media")))
        for (const char* name : {"tracks", "track"})
            for (const json::Value& track : json::elements(json::member(medium, name))) {
                const double position = json::number(track, "position").value_or(0);
                if (position >= 1 && position < 10000)
                    return std::to_string(int(position));
                const std::string number = audiocore::trackOf(json::text(track, "number"));
                if (!number.empty())
                    return number;
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
    return json::cleaned(credit);
}

void addRelease(musicbrainz::Recording& recording, const json::Value& release)
{
    const json::Value& group = json::member(release, "release-group");
    recording.album = json::text(release, "title");
    recording.release = json::identifier(release, "id");
    recording.track = trackOn(release);
    recording.year = audiocore::yearOf(json::text(release, "date"));
    if (recording.year.empty())
        recording.year = audiocore::yearOf(json::text(group, "first-release-date"));
}

/// The recording's own genre, or that of the album, or that of the artist.
std::string genreOf(const json::Value& recording, const json::Value* release)
{
    std::string genre = audiocore::mostVotedGenre(recording);
    if (genre.empty() && release)
        genre = audiocore::mostVotedGenre(json::member(*release, "release-group"));
    if (genre.empty())
        for (const json::Value& credit : json::elements(json::member(recording, "artist-credit")))
            if (genre.empty())
                genre = audiocore::mostVotedGenre(json::member(credit, "artist"));
    return audiocore::capitalised(genre);
}
} // namespace

audiocore::HttpRequest musicbrainz::recordingRequest(const ServiceAddresses& addresses,
                                                     const std::string& recording)
{
    HttpRequest request;
    request.address = addresses.musicBrainz + "/ws/2/recording/" + recording +
                      "?inc=artist-credits+releases+release-groups+media+genres&fmt=json";
    request.largestAnswer = largestAnswer;
    return request;
}

musicbrainz::Recording musicbrainz::readRecording(const std::string& answer)
{
    Recording recording;
    const std::optional<json::Value> root = json::parse(answer);
    if (!root)
        return recording;
    recording.title = json::text(*root, "title");
    recording.understood = !recording.title.empty();
    recording.artist = artistOf(*root);
    const json::Value* release = chooseRelease(*root);
    if (release)
        addRelease(recording, *release);
    if (recording.year.empty())
        recording.year = yearOf(json::text(*root, "first-release-date"));
    recording.genre = genreOf(*root, release);
    return recording;
}
