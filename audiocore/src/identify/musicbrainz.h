#pragma once

#include "identify/httpclient.h"
#include "identify/services.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

/// The MusicBrainz web service: a recording's identifier in, its texts out; and which recordings there are by
/// the texts that one knows.
///
/// The answer about a recording names 25 of its releases at most, just any of them. Songs that are on more
/// take further requests: for all the releases, page by page, and for the tracks of the chosen one.
namespace audiocore::musicbrainz {
/// Texts are UTF-8, empty when the answer does not tell them.
struct Release
{
    /// The lower, the better: official ones come first, of these the albums before singles and compilations,
    /// and of equals the earliest.
    using Rank = std::tuple<bool, int, std::string>;

    Rank rank;
    std::string id;
    std::string title; ///< never empty
    std::string year;
    std::string track; ///< the recording's place on its medium
    std::string genre; ///< the most voted one of the release, else of its group

    bool isOfficial() const { return !std::get<0>(rank); }
};

struct Recording
{
    bool understood = false;
    std::string id; ///< which the service goes by; another than asked for when two were merged
    std::string title;
    std::string artist; ///< the whole credit, joined as the database joins it
    std::string firstYear;
    std::string ownGenre;
    std::string artistGenre;
    std::optional<Release> release; ///< the best of those named
    bool hasMoreReleases = false;   ///< than those named, perhaps

    std::string year() const;
    /// The most voted genre of the recording, else of the release, else of the artist, as a title.
    std::string genre() const;
};

/// A recording that a search found.
struct FoundRecording
{
    std::string id;    ///< never empty
    std::string title; ///< never empty
    std::string credit;
    /// Whom else a file may name: the first artist by all of his names, the first two together, and so on.
    std::vector<std::string> artists;
    std::string comment;             ///< tells it from others of its title, as "live, 1985-07-13"
    double score = 0;                ///< the service's, 0 to 1
    std::int64_t milliseconds = 0;   ///< 0 when unknown
    std::vector<std::string> albums; ///< the titles of its releases
    bool isLive = false;             ///< all of its releases are recordings of concerts
    std::optional<Release> release;  ///< the best of those named
};

struct Search
{
    bool understood = false;
    std::vector<FoundRecording> recordings; ///< those with an identifier and a title
};

/// A part of the list of a recording's releases.
struct ReleasePage
{
    bool understood = false;
    std::size_t releases = 0;    ///< on this page
    double all = 0;              ///< in the whole list
    std::optional<Release> best; ///< of this page; without track and genre
};

HttpRequest recordingRequest(const ServiceAddresses& addresses, const std::string& recording);
Recording readRecording(const std::string& answer);

/// The query is in the syntax of the search.
HttpRequest searchRequest(const ServiceAddresses& addresses, const std::string& query);
Search readSearch(const std::string& answer);

enum class ReleaseFilter { Official, None };
HttpRequest releasesRequest(const ServiceAddresses& addresses, const std::string& recording,
                            ReleaseFilter filter, std::size_t offset);
ReleasePage readReleases(const std::string& answer);

HttpRequest releaseRequest(const ServiceAddresses& addresses, const std::string& release);
/// Takes track and genre from the answer; false when it makes no sense.
bool readTracks(Release& release, const std::string& answer, const std::string& recording);

/// Puts the better one of the two into the first, of equals the first.
void takeBetter(std::optional<Release>& best, const std::optional<Release>& other);
/// What the service says is wrong; empty when it does not.
std::string readError(const std::string& answer);
} // namespace audiocore::musicbrainz
