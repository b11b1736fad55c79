#include "library/librarywrite.h"

#include "base/failure.h"
#include "base/filebytes.h"
#include "base/newfile.h"
#include "library/libraryediting.h"
#include "library/libraryreading.h"

using base::NewFile;

namespace {
enum class Outcome { Done, Failed, ChangedMeanwhile };

Outcome tryOnce(const std::string& path, const itunes::TrackChanges& changes, itunes::Written& result,
                base::Failure& failure)
{
    result = itunes::Written();
    itunes::File library = itunes::openLibrary(path, failure);
    base::FileState before;
    if (!library || !base::stateOf(library.get(), before))
        return Outcome::Failed;
    itunes::LibrarySplices splices;
    const base::SystemFile old(library.get());
    if (!itunes::findSplices(old, changes, splices, failure))
        return Outcome::Failed;
    result.editsWithoutTrack = splices.editsWithoutTrack;
    if (splices.all.empty())
        return Outcome::Done;

    const auto made = NewFile::beside(path, NewFile::Content::Empty, failure);
    if (!made)
        return Outcome::Failed;
    if (made->original() != before)
        return Outcome::ChangedMeanwhile;
    base::SystemFile copy(made->file());
    if (!itunes::writeSpliced(old, copy, splices, failure.text) ||
        !itunes::readContents(made->file(), result.contents, failure) ||
        !itunes::isComplete(result.contents, splices, failure.text))
        return Outcome::Failed;
    library.reset(); // what is open cannot be replaced everywhere
    const NewFile::Taking taking = made->replaceOriginal(failure);
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
} // namespace

bool itunes::writeChanges(const std::string& path, const TrackChanges& changes, Written& written,
                          base::Failure& failure)
{
    constexpr int attempts = 5;
    base::removeLeftovers(path);
    for (int i = 0; i < attempts; ++i) {
        const Outcome outcome = tryOnce(path, changes, written, failure);
        if (outcome == Outcome::Done)
            noteNewName(path, written.contents.state);
        if (outcome != Outcome::ChangedMeanwhile)
            return outcome == Outcome::Done;
    }
    failure = {"another program keeps changing the file", base::Failure::Kind::ChangedMeanwhile};
    return false;
}
