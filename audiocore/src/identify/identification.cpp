#include "identify/identification.h"

#include "identify/acoustid.h"
#include "identify/coverart.h"
#include "identify/musicbrainz.h"
#include "log.h"
#include "text.h"

using audiocore::Cancellation;
using audiocore::Decoding;
using audiocore::Fingerprint;
using audiocore::HttpAnswer;
using audiocore::Identification;
using audiocore::Service;
using audiocore::Services;

namespace {
using Outcome = HttpAnswer::Outcome;

/// Ends the run with a failure.
struct Failure
{
    IdentifyStatus status;
    std::string reason; ///< for the log, empty when the reason is there already
};

Fingerprint fingerprint(const std::string& path, const Cancellation& cancellation)
{
    Fingerprint result = audiocore::fingerprintOf(path, cancellation);
    switch (result.result) {
    case Decoding::Cancelled:
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

/// The identifier of the file's recording.
std::string lookUp(const Services& services, const Fingerprint& fingerprint, const Cancellation& cancellation)
{
    namespace acoustid = audiocore::acoustid;
    const HttpAnswer answer =
        answerOf("AcoustID", services.acoustId, acoustid::lookupRequest(services.addresses, fingerprint),
                 cancellation);
    const acoustid::Lookup lookup = acoustid::readLookup(answer.body);
    if (answer.code != 200 || lookup.refused)
        refuse("AcoustID", answer, lookup.error);
    if (!lookup.understood)
        throw Failure{IDENTIFY_NOT_UNDERSTOOD, "AcoustID's answer makes no sense"};
    std::string recording = acoustid::chooseRecording(lookup.candidates, fingerprint.milliseconds);
    if (recording.empty())
        throw Failure{IDENTIFY_NO_MATCH, "AcoustID knows no such recording"};
    return recording;
}

audiocore::musicbrainz::Recording describe(const Services& services, const std::string& recording,
                                           const Cancellation& cancellation)
{
    namespace musicbrainz = audiocore::musicbrainz;
    const HttpAnswer answer =
        answerOf("MusicBrainz", services.musicBrainz,
                 musicbrainz::recordingRequest(services.addresses, recording), cancellation);
    if (answer.code != 200)
        refuse("MusicBrainz", answer, "");
    musicbrainz::Recording result = musicbrainz::readRecording(answer.body);
    if (!result.understood)
        throw Failure{IDENTIFY_NOT_UNDERSTOOD, "MusicBrainz's answer makes no sense"};
    return result;
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

void addTexts(Identification& found, const audiocore::musicbrainz::Recording& recording)
{
    found.texts[TAG_TITLE] = audiocore::toUtf32(recording.title);
    found.texts[TAG_ARTIST] = audiocore::toUtf32(recording.artist);
    found.texts[TAG_ALBUM] = audiocore::toUtf32(recording.album);
    found.texts[TAG_GENRE] = audiocore::toUtf32(recording.genre);
    found.texts[TAG_YEAR] = audiocore::toUtf32(recording.year);
    found.texts[TAG_TRACK] = audiocore::toUtf32(recording.track);
}

/// Puts the picture in; a failure but a cancellation leaves the texts alone.
void addPicture(Identification& found, const std::string& path, const Services& services,
                const std::string& release, const Cancellation& cancellation)
{
    found.status = IDENTIFY_FOUND;
    try {
        found.picture = picture(services, release, cancellation);
    } catch (const Failure& failure) {
        if (failure.status == IDENTIFY_CANCELLED)
            throw;
        audiocore::logLine(path, "is identified without its picture: " + failure.reason);
        found.status = IDENTIFY_FOUND_NO_PICTURE;
    }
}

Identification identify(const std::string& path, const Services& services, const Cancellation& cancellation)
{
    if (path.empty())
        throw Failure{IDENTIFY_NO_FILE, "no file is open"};
    if (services.addresses.key.empty())
        throw Failure{IDENTIFY_NO_KEY,
                      "MELODRIFT_ACOUSTID_KEY names no application key for the lookup service"};
    const std::string id = lookUp(services, fingerprint(path, cancellation), cancellation);
    const audiocore::musicbrainz::Recording recording = describe(services, id, cancellation);
    Identification found;
    addTexts(found, recording);
    addPicture(found, path, services, recording.release, cancellation);
    return found;
}
} // namespace

Identification audiocore::identifyFile(const std::string& path, const Services& services,
                                       const Cancellation& cancellation)
{
    try {
        return identify(path, services, cancellation);
    } catch (const Failure& failure) {
        if (!failure.reason.empty() && failure.status != IDENTIFY_CANCELLED)
            logLine(path.empty() ? "a file" : path, "is not identified: " + failure.reason);
        Identification found;
        found.status = failure.status;
        return found;
    }
}
