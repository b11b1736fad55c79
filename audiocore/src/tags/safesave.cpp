#include "tags/safesave.h"

#include "base/filebytes.h"
#include "base/log.h"
#include "base/newfile.h"
#include "base/savelock.h"
#include "media/checkedstream.h"
#include "tags/parsedmedia.h"
#include "tags/tagediting.h"

#include <memory>

using audiocore::CheckedStream;
using audiocore::NeededEdits;
using audiocore::ParsedMedia;
using audiocore::TagEdits;
using base::NewFile;

namespace {
constexpr int attempts = 5;

enum class Outcome { Saved, ChangedMeanwhile, Failed };

/// Reads the file as it is now; false with a reason when it cannot be read.
bool readNow(const std::string& path, ParsedMedia& media, std::string& error)
{
    CheckedStream stream(path, CheckedStream::Mode::Read);
    const std::string reason = audiocore::readMedia(stream, media);
    if (!reason.empty())
        error = "it " + reason;
    return reason.empty();
}

/// Writes the changes of the file in that state, which was read as `original`. `target` is no link.
Outcome saveChanges(const std::string& target, const base::FileState& state, const ParsedMedia& original,
                    const TagEdits& changes, std::string& error)
{
    const auto copy = NewFile::beside(target, NewFile::Content::Copied, error);
    if (!copy)
        return Outcome::Failed;
    if (copy->original() != state)
        return Outcome::ChangedMeanwhile;
    base::SystemFile bytes(copy->file());
    if (!audiocore::editCopy(bytes, target, changes, original, error))
        return Outcome::Failed;
    const NewFile::Taking taking = copy->replaceOriginal(error);
    if (taking == NewFile::Taking::Done && state.links > 1)
        base::logLine(target, "has further names (hard links); they keep the tags as they were");
    return taking == NewFile::Taking::Done               ? Outcome::Saved
           : taking == NewFile::Taking::ChangedMeanwhile ? Outcome::ChangedMeanwhile
                                                         : Outcome::Failed;
}

Outcome tryOnce(const std::string& path, const TagEdits& edits, NeededEdits& needed, std::string& error)
{
    const std::string target = base::realPath(path);
    if (target.empty()) {
        error = "there is no such file";
        return Outcome::Failed;
    }
    const base::SaveLock lock(target);
    base::removeLeftovers(target);
    base::FileState before;
    base::stateOf(target, before);
    // What readers are shown nothing of is left alone: what is saved into it nobody would see.
    ParsedMedia original;
    Outcome outcome = Outcome::Failed;
    if (readNow(target, original, error)) {
        needed = audiocore::neededEdits(original, edits);
        outcome = needed.edits.isEmpty() ? Outcome::Saved
                                         : saveChanges(target, before, original, needed.edits, error);
    }
    if (outcome == Outcome::Saved && !needed.edits.isEmpty())
        return outcome;
    // What was found, or hindered the save, may have been somebody else's writing.
    base::FileState now;
    const bool same = !base::stateOf(target, now) || now == before;
    return same ? outcome : Outcome::ChangedMeanwhile;
}
} // namespace

bool audiocore::saveEdits(const std::string& path, const TagEdits& edits)
{
    std::string error;
    NeededEdits needed;
    Outcome outcome = Outcome::ChangedMeanwhile;
    try {
        for (int i = 0; i < attempts && outcome == Outcome::ChangedMeanwhile; ++i) {
            needed = NeededEdits();
            outcome = tryOnce(path, edits, needed, error);
        }
        if (outcome == Outcome::ChangedMeanwhile)
            error = "other programs keep changing the file";
    } catch (const EndlessReading& reason) {
        outcome = Outcome::Failed;
        error = std::string("it ") + reason.what();
    }
    if (outcome != Outcome::Saved)
        base::logLine(path, "the tag was not saved: " + error);
    else if (!needed.leftOut.empty())
        base::logLine(path, needed.leftOut);
    return outcome == Outcome::Saved && needed.leftOut.empty();
}
