#include "identify/identification.h"

#include "base/log.h"
#include "base/platform.h"
#include "base/text.h"
#include "identify/acoustid.h"
#include "identify/coverart.h"
#include "identify/judging.h"
#include "identify/musicbrainz.h"
#include "identify/recordingquery.h"

#include <algorithm>

using audiocore::Cancellation;
using audiocore::Decoding;
using audiocore::Fingerprint;
using audiocore::HttpAnswer;
using audiocore::Identification;
using audiocore::Service;
using audiocore::Services;

namespace musicbrainz = audiocore::musicbrainz;

namespace {
using Outcome = HttpAnswer::Outcome;

/// Of a hundred releases each, and each a second's wait. The best-known songs are on a few hundred.
constexpr int mostReleasePages = 10;

/// Ends the run with a failure.
struct Failure
{
    IdentifyStatus status;
    std::string reason; ///< for the log, empty when the reason is there already
};

/// Whether a failure was for want of time, and no user's wish.
bool isLate(const Failure& failure, const Cancellation& cancellation)
{
    return failure.status == IDENTIFY_CANCELLED && cancellation.hasExpired();
}

bool isFile(const std::string& path)
{
    std::FILE* const file = base::openFile(path, false);
    if (!file)
        return false;
    base::FileState state;
    const bool regular = base::stateOf(file, state) && state.regular;
    std::fclose(file);
    return regular;
}

Fingerprint fingerprint(const std::string& path, const Services& services, const Cancellation& cancellation)
{
    const Cancellation limited(cancellation, Cancellation::Clock::now() + services.patience.decoding);
    Fingerprint result = audiocore::fingerprintOf(path, limited);
    switch (result.result) {
    case Decoding::Cancelled:
        if (limited.hasExpired())
            throw Failure{IDENTIFY_NO_AUDIO, "decoding it takes too long"};
        throw Failure{IDENTIFY_CANCELLED, ""};
    case Decoding::Unreadable:
        throw Failure{IDENTIFY_NO_FILE, ""};
    case Decoding::NoAudio:
        throw Failure{IDENTIFY_NO_AUDIO, ""};
    case Decoding::Done:
        break;
    }
    if (result.text.empty() || result.milliseconds < 1000)
        throw Failure{IDENTIFY_TOO_SHORT, "it is too short for a fingerprint"};
    return result;
}

IdentifyStatus statusOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Cancelled:
        return IDENTIFY_CANCELLED;
    case Outcome::BadAddress:
        return IDENTIFY_BAD_ADDRESS;
    default:
        return IDENTIFY_NO_CONNECTION;
    }
}

/// The answer with whatever code; failures to get any end the run.
HttpAnswer answerOf(const char* name, const Service& service, const audiocore::HttpRequest& request,
                    const Cancellation& cancellation)
{
    HttpAnswer answer = service.ask(request, cancellation);
    if (answer.outcome != Outcome::Answered)
        throw Failure{statusOf(answer.outcome), std::string(name) + ": " + answer.error};
    return answer;
}

void refuse(const char* name, const HttpAnswer& answer, const std::string& error)
{
    throw Failure{IDENTIFY_REFUSED, std::string(name) + " answers " + std::to_string(answer.code) +
                                        (error.empty() ? "" : ", \"" + error + "\"")};
}

[[noreturn]] void failToUnderstand(const char* name)
{
    throw Failure{IDENTIFY_NOT_UNDERSTOOD, std::string(name) + "'s answer makes no sense"};
}

/// A recording that the file may be of.
struct Match
{
    std::string recording; ///< its identifier; empty for none
    double score = 0;      ///< 0 to 1
};

/// The recording that sounds like it.
Match lookUp(const Services& services, const Fingerprint& fingerprint, const Cancellation& cancellation)
{
    namespace acoustid = audiocore::acoustid;
    const HttpAnswer answer =
        answerOf("AcoustID", services.acoustId, acoustid::lookupRequest(services.addresses, fingerprint),
                 cancellation);
    const acoustid::Lookup lookup = acoustid::readLookup(answer.body);
    if (answer.code != 200 || lookup.refused)
        refuse("AcoustID", answer, lookup.error);
    if (!lookup.understood)
        failToUnderstand("AcoustID");
    const acoustid::Candidate* const best =
        acoustid::chooseRecording(lookup.candidates, fingerprint.milliseconds);
    if (!best)
        throw Failure{IDENTIFY_NO_MATCH, "AcoustID knows no such recording"};
    return {best->recording, best->score};
}

/// What MusicBrainz answers when it does not refuse.
std::string metadata(const Services& services, const audiocore::HttpRequest& request,
                     const Cancellation& cancellation)
{
    HttpAnswer answer = answerOf("MusicBrainz", services.musicBrainz, request, cancellation);
    if (answer.code != 200)
        refuse("MusicBrainz", answer, musicbrainz::readError(answer.body));
    return std::move(answer.body);
}

/// Puts the recording's best release into the first argument; asks for so many pages at most, and counts them
/// down.
void takeBestRelease(std::optional<musicbrainz::Release>& best, const Services& services,
                     const std::string& recording, musicbrainz::ReleaseFilter filter, int& pagesLeft,
                     const Cancellation& cancellation)
{
    std::size_t read = 0;
    bool more = true;
    while (more && pagesLeft-- > 0) {
        const musicbrainz::ReleasePage page = musicbrainz::readReleases(
            metadata(services, musicbrainz::releasesRequest(services.addresses, recording, filter, read),
                     cancellation));
        if (!page.understood)
            failToUnderstand("MusicBrainz");
        musicbrainz::takeBetter(best, page.best);
        read += page.releases;
        more = page.releases > 0 && double(read) < page.all;
    }
}

/// Puts the best of all releases of a recording into it, whose answer does not name them all.
void takeBestOfAll(musicbrainz::Recording& recording, const Services& services, const std::string& id,
                   const Cancellation& cancellation)
{
    using musicbrainz::ReleaseFilter;
    std::optional<musicbrainz::Release> best = recording.release;
    int pagesLeft = mostReleasePages;
    takeBestRelease(best, services, id, ReleaseFilter::Official, pagesLeft, cancellation);
    if (!best || !best->isOfficial())
        takeBestRelease(best, services, id, ReleaseFilter::None, pagesLeft, cancellation);
    if (!best || (recording.release && best->id == recording.release->id))
        return;
    if (!best->id.empty() &&
        !musicbrainz::readTracks(
            *best,
            metadata(services, musicbrainz::releaseRequest(services.addresses, best->id), cancellation), id))
        failToUnderstand("MusicBrainz");
    recording.release = best;
}

/// The same; where that would take too long, the best of those named stays.
void chooseAmongAll(musicbrainz::Recording& recording, const Services& services, const std::string& id,
                    const Cancellation& cancellation)
{
    try {
        takeBestOfAll(recording, services, id, cancellation);
    } catch (const Failure& failure) {
        if (!isLate(failure, cancellation))
            throw;
    }
}

musicbrainz::Recording describe(const Services& services, const std::string& id,
                                const Cancellation& cancellation)
{
    musicbrainz::Recording recording = musicbrainz::readRecording(
        metadata(services, musicbrainz::recordingRequest(services.addresses, id), cancellation));
    if (!recording.understood)
        failToUnderstand("MusicBrainz");
    if (recording.hasMoreReleases)
        chooseAmongAll(recording, services, recording.id.empty() ? id : recording.id, cancellation);
    return recording;
}

/// The release's front picture; empty when it has none.
std::string picture(const Services& services, const std::string& release, const Cancellation& cancellation)
{
    namespace coverart = audiocore::coverart;
    if (release.empty())
        return std::string();
    HttpAnswer answer = answerOf("Cover Art Archive", services.coverArt,
                                 coverart::frontRequest(services.addresses, release), cancellation);
    if (answer.code == 404)
        return std::string();
    if (answer.code != 200)
        refuse("Cover Art Archive", answer, "");
    if (!coverart::isPicture(answer.body))
        throw Failure{IDENTIFY_NOT_UNDERSTOOD, "Cover Art Archive's answer is no picture"};
    return std::move(answer.body);
}

void addTexts(Identification& found, const musicbrainz::Recording& recording)
{
    found.texts[TAG_TITLE] = base::toUtf32(recording.title);
    found.texts[TAG_ARTIST] = base::toUtf32(recording.artist);
    found.texts[TAG_GENRE] = base::toUtf32(recording.genre());
    found.texts[TAG_YEAR] = base::toUtf32(recording.year());
    if (!recording.release)
        return;
    found.texts[TAG_ALBUM] = base::toUtf32(recording.release->title);
    found.texts[TAG_TRACK] = base::toUtf32(recording.release->track);
}

/// Puts the picture in; a failure but a cancellation leaves the texts alone.
void addPicture(Identification& found, const std::string& path, const Services& services,
                const std::string& release, const Cancellation& cancellation)
{
    try {
        found.picture = picture(services, release, cancellation);
    } catch (const Failure& failure) {
        const bool late = isLate(failure, cancellation);
        if (failure.status == IDENTIFY_CANCELLED && !late)
            throw;
        base::logLine(path, "is identified without its picture: " +
                                (late ? "the services take too long" : failure.reason));
    }
}

Match matchBySound(const std::string& path, const Services& services, const Cancellation& cancellation)
{
    if (services.addresses.key.empty())
        throw Failure{IDENTIFY_NO_KEY, "there is no application key for AcoustID"};
    return lookUp(services, fingerprint(path, services, cancellation), cancellation);
}

/// By what the file says of itself.
Match matchByTags(const std::string& path, const Services& services, const Cancellation& cancellation)
{
    const audiocore::SongHints hints = audiocore::hintsOf(path);
    const std::string query = audiocore::recordingQuery(hints);
    if (query.empty())
        return {};
    const musicbrainz::Search search = musicbrainz::readSearch(
        metadata(services, musicbrainz::searchRequest(services.addresses, query), cancellation));
    if (!search.understood)
        failToUnderstand("MusicBrainz");
    const musicbrainz::FoundRecording* const found = audiocore::chooseFitting(search.recordings, hints);
    return found ? Match{found->id, audiocore::fitOf(*found, hints)} : Match();
}

/// Whether a failure of identifying by sound leaves the other way open.
bool leavesTags(const Failure& failure)
{
    return failure.status == IDENTIFY_NO_KEY || failure.status == IDENTIFY_NO_AUDIO ||
           failure.status == IDENTIFY_TOO_SHORT || failure.status == IDENTIFY_NO_MATCH;
}

/// Notes by the status which way it was found.
Match matchOf(const std::string& path, const Services& services, const Cancellation& cancellation,
              IdentifyStatus& status)
{
    status = IDENTIFY_FOUND;
    try {
        return matchBySound(path, services, cancellation);
    } catch (const Failure& failure) {
        if (!leavesTags(failure))
            throw;
        status = IDENTIFY_FOUND_BY_TAGS;
        Match match = matchByTags(path, services, cancellation);
        if (!match.recording.empty())
            return match;
        if (failure.reason.empty())
            throw;
        throw Failure{failure.status, failure.reason + ", and no known recording fits what its tags say"};
    }
}

Identification identify(const std::string& path, const Services& services, const Cancellation& cancellation)
{
    if (path.empty() || !isFile(path))
        throw Failure{IDENTIFY_NO_FILE, path.empty() ? "no file is open" : "it is no file that can be read"};
    Identification found;
    const Match match = matchOf(path, services, cancellation, found.status);
    found.score = std::clamp(match.score, 0.0, 1.0); // the service may say anything
    const musicbrainz::Recording recording = describe(services, match.recording, cancellation);
    addTexts(found, recording);
    addPicture(found, path, services, recording.release ? recording.release->id : "", cancellation);
    return found;
}
} // namespace

Identification audiocore::identifyFile(const std::string& path, const Services& services,
                                       const Cancellation& cancellation)
{
    const Cancellation limited(cancellation, Cancellation::Clock::now() + services.patience.inAll);
    try {
        return identify(path, services, limited);
    } catch (const Failure& failure) {
        const bool late = isLate(failure, limited);
        const std::string reason = late ? "the services take too long" : failure.reason;
        Identification found;
        found.status = late ? IDENTIFY_NO_CONNECTION : failure.status;
        if (!reason.empty() && found.status != IDENTIFY_CANCELLED)
            base::logLine(path.empty() ? "a file" : path, "is not identified: " + reason);
        return found;
    }
}
