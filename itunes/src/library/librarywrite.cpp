#include "library/librarywrite.h"

#include "base/failure.h"
#include "base/filebytes.h"
#include "base/newfile.h"
#include "library/libraryediting.h"
#include "library/libraryreading.h"
#include "library/takenpieces.h"
#include "library/takentracks.h"

#include <algorithm>
#include <functional>
#include <utility>

using base::NewFile;

namespace {
enum class Outcome { Done, Failed, ChangedMeanwhile };

/// What has to change in the library, which is in this state; false with the reason.
using Finding = std::function<bool(const base::FileBytes& library, const base::FileState& state,
                                   itunes::LibrarySplices& splices, base::Failure& failure)>;

bool isAsWanted(const base::FileBytes& copy, const itunes::LibrarySplices& splices, base::Failure& failure)
{
    if (!splices.wanted || itunes::ContentMark::of(copy) == splices.wanted)
        return true;
    failure = itunes::changedByOthers();
    return false;
}

Outcome tryOnce(const std::string& path, const Finding& find, itunes::Written& result, base::Failure& failure)
{
    result = itunes::Written();
    itunes::File library = itunes::openLibrary(path, failure);
    if (!library || !base::stateOf(library.get(), result.before))
        return Outcome::Failed;
    itunes::LibrarySplices splices;
    const base::SystemFile old(library.get());
    if (!find(old, result.before, splices, failure))
        return Outcome::Failed;
    result.editsWithoutTrack = splices.editsWithoutTrack;
    if (splices.all.empty())
        return Outcome::Done;

    const auto made = NewFile::beside(path, NewFile::Content::Empty, failure);
    if (!made)
        return Outcome::Failed;
    if (made->original() != result.before)
        return Outcome::ChangedMeanwhile;
    base::SystemFile copy(made->file());
    if (!itunes::writeSpliced(old, copy, splices, failure.text) || !isAsWanted(copy, splices, failure) ||
        !itunes::readContents(made->file(), result.contents, failure) ||
        !itunes::isComplete(result.contents, splices, failure.text))
        return Outcome::Failed;
    library.reset(); // what is open cannot be replaced everywhere
    const NewFile::Taking taking = made->replaceOriginal(failure);
    result.replaced = taking == NewFile::Taking::Done;
    result.splices = std::move(splices.all);
    return taking == NewFile::Taking::Done               ? Outcome::Done
           : taking == NewFile::Taking::ChangedMeanwhile ? Outcome::ChangedMeanwhile
                                                         : Outcome::Failed;
}

/// The state of a new file that has taken the library's name since, which may count as a change.
void noteNewName(const std::string& path, base::FileState& state)
{
    base::FileState now;
    if (base::stateOf(path, now) && now.device == state.device && now.inode == state.inode &&
        now.size == state.size && now.modified == state.modified)
        state = now;
}

bool write(const std::string& path, const Finding& find, itunes::Written& written, base::Failure& failure)
{
    constexpr int attempts = 5;
    base::removeLeftovers(path);
    for (int i = 0; i < attempts; ++i) {
        const Outcome outcome = tryOnce(path, find, written, failure);
        if (outcome == Outcome::Done)
            noteNewName(path, written.contents.state);
        if (outcome != Outcome::ChangedMeanwhile)
            return outcome == Outcome::Done;
    }
    failure = {"another program keeps changing the file", base::Failure::Kind::ChangedMeanwhile};
    return false;
}
} // namespace

bool itunes::writeChanges(const std::string& path, const TrackChanges& changes, Written& written,
                          base::Failure& failure)
{
    const auto find = [&changes](const base::FileBytes& library, const base::FileState&,
                                 LibrarySplices& splices, base::Failure& reason) {
        return findSplices(library, changes, splices, reason);
    };
    return write(path, find, written, failure);
}

bool itunes::writeBack(const std::string& path, const TakenPieces& taken, const std::vector<Splice>& pieces,
                       Written& written, base::Failure& failure)
{
    const auto find = [&](const base::FileBytes&, const base::FileState& state, LibrarySplices& splices,
                          base::Failure& reason) {
        if (!taken.isGoodFor(state)) {
            reason = changedByOthers();
            return false;
        }
        splices.all = pieces;
        const auto isEntry = [](const Splice& piece) { return piece.isEntry; };
        splices.tracksLeft =
            taken.tracks() + std::uint64_t(std::count_if(pieces.begin(), pieces.end(), isEntry));
        return true;
    };
    return write(path, find, written, failure);
}

bool itunes::writeBack(const std::string& path, const TakenTracks& taken, Written& written,
                       base::Failure& failure)
{
    const auto find = [&taken](const base::FileBytes& library, const base::FileState&,
                               LibrarySplices& splices, base::Failure& reason) {
        LibraryContents now;
        if (!readContents(library, now, reason))
            return false;
        splices.all = taken.splicesFor(now);
        const auto isEntry = [](const Splice& piece) { return piece.isEntry; };
        splices.tracksLeft =
            now.tracks + std::uint64_t(std::count_if(splices.all.begin(), splices.all.end(), isEntry));
        splices.wanted = taken.whole();
        return true;
    };
    return write(path, find, written, failure);
}

base::Failure itunes::changedByOthers()
{
    return {"another program changed it since", base::Failure::Kind::ChangedSince};
}
