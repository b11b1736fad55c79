#include "itunes/tracktaking.h"

#include "base/log.h"
#include "library/libraryfile.h"

using base::Failure;
using itunes::LibraryFile;
using itunes::TakenTracks;

namespace {
std::string logged(const std::string& library, const Failure& failure)
{
    base::logLine(library, "the music library was not changed: " + failure.text);
    return failure.text;
}

iTunesTaking answerOf(LibraryFile::Taking taking)
{
    return taking == LibraryFile::Taking::Done    ? iTunesTaking::Done
           : taking == LibraryFile::Taking::Waits ? iTunesTaking::Waits
                                                  : iTunesTaking::Refused;
}
} // namespace

iTunesTaking takeTracksOut(const std::string& library, const std::vector<std::uint64_t>& persistentIds,
                           const iTunesAnnounce& announce, std::string& reason)
{
    Failure failure;
    const auto tell = [&announce](const TakenTracks& taken, Failure& why) {
        why.text = announce(taken.bytes());
        return why.text.empty();
    };
    LibraryFile file(library);
    const iTunesTaking taking =
        answerOf(file.take({persistentIds.begin(), persistentIds.end()}, tell, failure));
    if (taking != iTunesTaking::Done)
        reason = logged(library, failure);
    return taking;
}

bool putTracksBack(const std::string& library, const std::string& taken, std::string& reason)
{
    Failure failure = {"what was taken out of it is not whole", Failure::Kind::NotKept};
    const std::optional<TakenTracks> tracks = TakenTracks::fromBytes(taken);
    if (tracks && LibraryFile(library).putBack(*tracks, failure))
        return true;
    reason = logged(library, failure);
    return false;
}
