// Arbitrary bytes as the answers of the services that identify songs.

#include "base/text.h"
#include "identify/acoustid.h"
#include "identify/coverart.h"
#include "identify/judging.h"
#include "identify/musicbrainz.h"
#include "identify/recordingquery.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace musicbrainz = audiocore::musicbrainz;

namespace {
constexpr std::size_t longestText = 4096;

/// What reaches the caller is bounded text without control characters.
void check(const std::string& text)
{
    if (text.size() > longestText)
        std::abort();
    for (const char32_t c : base::toUtf32(text))
        if (c < 0x20 || c == 0x7F)
            std::abort();
}

/// What becomes part of an address is an identifier, or nothing.
void checkIdentifier(const std::string& identifier)
{
    if (!identifier.empty() && identifier.size() != 36)
        std::abort();
    if (identifier.find_first_not_of("0123456789abcdefABCDEF-") != std::string::npos)
        std::abort();
}

void checkRelease(const std::optional<musicbrainz::Release>& release)
{
    if (!release)
        return;
    if (release->title.empty())
        std::abort();
    for (const std::string* text : {&release->title, &release->year, &release->track, &release->genre})
        check(*text);
    checkIdentifier(release->id);
}
/// What a search found is bounded, and so is how well it fits.
void checkFound(const musicbrainz::FoundRecording& found, const audiocore::SongHints& hints)
{
    for (const std::string& text : {found.title, found.credit, found.comment})
        check(text);
    for (const std::vector<std::string>* const texts : {&found.artists, &found.albums})
        for (const std::string& text : *texts)
            check(text);
    if (found.id.empty() || found.title.empty() || found.milliseconds < 0)
        std::abort();
    checkIdentifier(found.id);
    checkRelease(found.release);
    const double fit = audiocore::fitOf(found, hints);
    if (!(fit >= 0 && fit <= 1))
        std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string answer(reinterpret_cast<const char*>(data), size);
    const audiocore::acoustid::Lookup lookup = audiocore::acoustid::readLookup(answer);
    check(lookup.error);
    for (const std::int64_t milliseconds : {0, 200000})
        if (const auto* const chosen = audiocore::acoustid::chooseRecording(lookup.candidates, milliseconds))
            checkIdentifier(chosen->recording);

    const musicbrainz::Recording recording = musicbrainz::readRecording(answer);
    for (const std::string& text : {recording.title, recording.artist, recording.year(), recording.genre()})
        check(text);
    checkIdentifier(recording.id);
    checkRelease(recording.release);
    std::optional<musicbrainz::Release> release = musicbrainz::readReleases(answer).best;
    checkRelease(release);
    if (release) {
        musicbrainz::readTracks(*release, answer, recording.id);
        checkRelease(release);
    }
    const audiocore::SongHints hints = {{answer.substr(0, 1000), recording.artist, recording.title}, 200000};
    const musicbrainz::Search search = musicbrainz::readSearch(answer);
    for (const musicbrainz::FoundRecording& found : search.recordings)
        checkFound(found, hints);
    const musicbrainz::FoundRecording* const chosen = audiocore::chooseFitting(search.recordings, hints);
    if (chosen && audiocore::fitOf(*chosen, hints) < 0.84)
        std::abort();
    if (audiocore::recordingQuery(hints).size() > 5000)
        std::abort();
    check(musicbrainz::readError(answer));
    audiocore::coverart::isPicture(answer);
    return 0;
}
