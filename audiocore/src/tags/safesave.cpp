#include "tags/safesave.h"

#include "base/log.h"
#include "base/newfile.h"
#include "base/savelock.h"
#include "media/checkedstream.h"
#include "tags/parsedmedia.h"
#include "tags/tagfields.h"
#include "tags/tagwriting.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

using audiocore::CheckedStream;
using audiocore::TagEdits;
using base::NewFile;

namespace {
constexpr std::int64_t longestShift = 100; // milliseconds
constexpr int attempts = 5;
const char* const noMusic = "it holds no music that can be read";

enum class Outcome { Saved, ChangedMeanwhile, Failed };

struct Needed
{
    TagEdits edits;
    std::string leftOut; ///< why the picture is not among them
};

/// Whether readers are shown anything of the file at all: what is saved into another one nobody would see.
bool holdsMusic(const std::string& path, std::string& error)
{
    if (audiocore::parsedMedia(path)->format != AUDIO_FORMAT_UNKNOWN)
        return true;
    error = noMusic;
    return false;
}

/// The edits that the file needs and can take; false with a reason when it cannot be read.
bool neededEdits(CheckedStream& stream, const TagEdits& edits, Needed& needed, std::string& error)
{
    if (!stream.isOpen()) {
        error = stream.openError();
        return false;
    }
    const audiocore::MediaFile media = audiocore::openMedia(stream, audiocore::Purpose::Reading);
    if (media.format == AUDIO_FORMAT_UNKNOWN) {
        error = noMusic;
        return false;
    }
    needed.edits = audiocore::changesOf(edits, audiocore::readTags(media));
    const unsigned int most = media.file->largestPicture();
    if (needed.edits.picture && needed.edits.picture->size() > most) {
        needed.leftOut = "the picture was not saved, the old one stays: it has " +
                         std::to_string(needed.edits.picture->size()) + " bytes, the file takes " +
                         std::to_string(most) + " at the most";
        needed.edits.picture.reset();
    }
    if (stream.ranDry())
        throw audiocore::EndlessReading();
    if (stream.readFailed())
        error = "it cannot be read to its end";
    return !stream.readFailed();
}

bool neededEdits(const std::string& path, const TagEdits& edits, Needed& needed, std::string& error)
{
    CheckedStream stream(path, CheckedStream::Mode::Read);
    return neededEdits(stream, edits, needed, error);
}

/// Edits the copy and hands it to the device.
bool editCopy(const NewFile& copy, const std::string& target, const TagEdits& edits, std::string& error)
{
    CheckedStream stream(copy.file(), target, CheckedStream::Mode::ReadWrite);
    if (!stream.isOpen()) {
        error = stream.openError();
        return false;
    }
    {
        const audiocore::MediaFile media = audiocore::openMedia(stream, audiocore::Purpose::Writing);
        error = media.file ? audiocore::writeTags(media, edits) : audiocore::cannotBeWritten;
        if (!error.empty())
            return false;
    }
    if (!stream.flushToDevice()) {
        error = "the new file cannot be written, the disk may be full";
        return false;
    }
    return true;
}

/// Whether the copy now reads as the edits want it: the old file is not given up for one that does not.
bool readsAsWanted(const NewFile& copy, const std::string& target, const TagEdits& edits, std::string& error)
{
    CheckedStream stream(copy.file(), target, CheckedStream::Mode::Read);
    Needed left;
    if (!neededEdits(stream, edits, left, error))
        return false;
    if (left.edits.isEmpty())
        return true;
    error = "the new file does not read back as written";
    return false;
}

/// Whether the copy plays as the original does: a tag that was written over music would show here.
bool playsAsBefore(const NewFile& copy, const std::string& target, std::string& error)
{
    const auto before = audiocore::parsedMedia(target);
    const auto after = audiocore::parsedMedia(copy.file(), target);
    const std::int64_t shift = std::abs(after->properties.milliseconds - before->properties.milliseconds);
    if (after->format == before->format && after->properties.sampleRate == before->properties.sampleRate &&
        shift <= longestShift)
        return true;
    error = "the new file does not play as the old one does";
    return false;
}

/// Writes the changes of the file in that state. `target` is no link.
Outcome saveChanges(const std::string& target, const base::FileState& state, const TagEdits& changes,
                    std::string& error)
{
    const auto copy = NewFile::beside(target, NewFile::Content::Copied, error);
    if (!copy)
        return Outcome::Failed;
    if (copy->original() != state)
        return Outcome::ChangedMeanwhile;
    if (!editCopy(*copy, target, changes, error) || !readsAsWanted(*copy, target, changes, error) ||
        !playsAsBefore(*copy, target, error))
        return Outcome::Failed;
    const NewFile::Taking taking = copy->replaceOriginal(error);
    if (taking == NewFile::Taking::Done && state.links > 1)
        base::logLine(target, "has further names (hard links); they keep the tags as they were");
    return taking == NewFile::Taking::Done               ? Outcome::Saved
           : taking == NewFile::Taking::ChangedMeanwhile ? Outcome::ChangedMeanwhile
                                                         : Outcome::Failed;
}

Outcome tryOnce(const std::string& path, const TagEdits& edits, Needed& needed, std::string& error)
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
    Outcome outcome = Outcome::Failed;
    if (holdsMusic(target, error) && neededEdits(target, edits, needed, error))
        outcome = needed.edits.isEmpty() ? Outcome::Saved : saveChanges(target, before, needed.edits, error);
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
    Needed needed;
    Outcome outcome = Outcome::ChangedMeanwhile;
    try {
        for (int i = 0; i < attempts && outcome == Outcome::ChangedMeanwhile; ++i) {
            needed = Needed();
            outcome = tryOnce(path, edits, needed, error);
        }
        if (outcome == Outcome::ChangedMeanwhile)
            error = "other programs keep changing the file";
    } catch (const EndlessReading& reason) {
        outcome = Outcome::Failed;
        error = reason.what();
    }
    if (outcome != Outcome::Saved)
        base::logLine(path, "the tag was not saved: " + error);
    else if (!needed.leftOut.empty())
        base::logLine(path, needed.leftOut);
    return outcome == Outcome::Saved && needed.leftOut.empty();
}
