// Arbitrary bytes as the answers of the services that identify songs.

#include "base/text.h"
#include "identify/acoustid.h"
#include "identify/coverart.h"
#include "identify/musicbrainz.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

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
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string answer(reinterpret_cast<const char*>(data), size);
    const audiocore::acoustid::Lookup lookup = audiocore::acoustid::readLookup(answer);
    check(lookup.error);
    for (const std::int64_t milliseconds : {0, 200000})
        checkIdentifier(audiocore::acoustid::chooseRecording(lookup.candidates, milliseconds));

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
    check(musicbrainz::readError(answer));
    audiocore::coverart::isPicture(answer);
    return 0;
}
