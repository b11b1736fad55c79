#include "tags/safesave.h"

#include "base/failure.h"
#include "base/filebytes.h"
#include "base/log.h"
#include "base/newfile.h"
#include "base/savelock.h"
#include "media/checkedstream.h"
#include "tags/parsedmedia.h"
#include "tags/tagediting.h"

#include <cerrno>
#include <memory>

using audiocore::CheckedStream;
using audiocore::NeededEdits;
using audiocore::ParsedMedia;
using audiocore::TagEdits;
using base::Failure;
using base::NewFile;

namespace {
constexpr int attempts = 5;

enum class Outcome { Saved, ChangedMeanwhile, Failed };

SaveProblem problemOf(Failure::Kind kind)
{
    switch (kind) {
    case Failure::Kind::FileReadOnly:
        return SAVE_FILE_READ_ONLY;
    case Failure::Kind::FolderReadOnly:
        return SAVE_FOLDER_READ_ONLY;
    case Failure::Kind::DiskReadOnly:
        return SAVE_DISK_READ_ONLY;
    case Failure::Kind::NoPermission:
        return SAVE_NO_PERMISSION;
    case Failure::Kind::DiskFull:
        return SAVE_DISK_FULL;
    case Failure::Kind::Gone:
        return SAVE_FILE_GONE;
    case Failure::Kind::ChangedMeanwhile:
        return SAVE_CHANGED_MEANWHILE;
    case Failure::Kind::NotSafe:
        return SAVE_NOT_SAFE;
    default:
        return SAVE_OTHER_PROBLEM;
    }
}

/// Reads the file as it is now; false with the reason when it cannot be read.
bool readNow(const std::string& path, ParsedMedia& media, Failure& failure)
{
    errno = 0;
    CheckedStream stream(path, CheckedStream::Mode::Read);
    if (!stream.isOpen()) {
        failure = {stream.openError(), base::kindOf(errno)};
        return false;
    }
    const std::string reason = audiocore::readMedia(stream, media);
    failure = {"it " + reason, Failure::Kind::NotSafe};
    return reason.empty();
}

/// Writes the changes of the file in that state, which was read as `original`. `target` is no link.
Outcome saveChanges(const std::string& target, const base::FileState& state, const ParsedMedia& original,
                    const TagEdits& changes, Failure& failure)
{
    const auto copy = NewFile::beside(target, NewFile::Content::Copied, failure);
    if (!copy)
        return Outcome::Failed;
    if (copy->original() != state)
        return Outcome::ChangedMeanwhile;
    base::SystemFile bytes(copy->file());
    if (!audiocore::editCopy(bytes, target, changes, original, failure.text)) {
        const int writeError = bytes.writeError();
        failure.kind = writeError != 0 ? base::kindOf(writeError) : Failure::Kind::NotSafe;
        return Outcome::Failed;
    }
    const NewFile::Taking taking = copy->replaceOriginal(failure);
    if (taking == NewFile::Taking::Done && state.links > 1)
        base::logLine(target, "has further names (hard links); they keep the tags as they were");
    return taking == NewFile::Taking::Done               ? Outcome::Saved
           : taking == NewFile::Taking::ChangedMeanwhile ? Outcome::ChangedMeanwhile
                                                         : Outcome::Failed;
}

Outcome tryOnce(const std::string& path, const TagEdits& edits, NeededEdits& needed, Failure& failure)
{
    const std::string target = base::realPath(path);
    if (target.empty()) {
        failure = base::systemFailure("it cannot be found: ");
        return Outcome::Failed;
    }
    const base::SaveLock lock(target);
    base::removeLeftovers(target);
    base::FileState before;
    base::stateOf(target, before);
    // What readers are shown nothing of is left alone: what is saved into it nobody would see.
    ParsedMedia original;
    Outcome outcome = Outcome::Failed;
    if (readNow(target, original, failure)) {
        needed = audiocore::neededEdits(original, edits);
        outcome = needed.edits.isEmpty() ? Outcome::Saved
                                         : saveChanges(target, before, original, needed.edits, failure);
    }
    if (outcome == Outcome::Saved && !needed.edits.isEmpty())
        return outcome;
    // What was found, or hindered the save, may have been somebody else's writing.
    base::FileState now;
    const bool same = !base::stateOf(target, now) || now == before;
    return same ? outcome : Outcome::ChangedMeanwhile;
}
} // namespace

SaveProblem audiocore::saveEdits(const std::string& path, const TagEdits& edits)
{
    Failure failure;
    NeededEdits needed;
    Outcome outcome = Outcome::ChangedMeanwhile;
    try {
        for (int i = 0; i < attempts && outcome == Outcome::ChangedMeanwhile; ++i) {
            needed = NeededEdits();
            outcome = tryOnce(path, edits, needed, failure);
        }
        if (outcome == Outcome::ChangedMeanwhile)
            failure = {"other programs keep changing the file", Failure::Kind::ChangedMeanwhile};
    } catch (const EndlessReading& reason) {
        outcome = Outcome::Failed;
        failure = {std::string("it ") + reason.what(), Failure::Kind::NotSafe};
    }
    if (outcome != Outcome::Saved) {
        base::logLine(path, "the tag was not saved: " + failure.text);
        return problemOf(failure.kind);
    }
    if (needed.leftOut.empty())
        return SAVE_NO_PROBLEM;
    base::logLine(path, needed.leftOut);
    return SAVE_PICTURE_TOO_LARGE;
}
