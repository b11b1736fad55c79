#include "safesave.h"

#include "checkedstream.h"
#include "log.h"
#include "parsedmedia.h"
#include "pictures.h"
#include "platform.h"
#include "tagwriting.h"

#include <cstdint>
#include <cstdlib>
#include <memory>

using audiocore::CheckedStream;
using audiocore::TagEdits;

namespace {
constexpr std::int64_t longestShift = 100; // milliseconds
const char* const noMusic = "it holds no music that can be read";

using Lock = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

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
bool neededEdits(const std::string& path, const TagEdits& edits, Needed& needed, std::string& error)
{
    CheckedStream stream(path, CheckedStream::Mode::Read);
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
    const unsigned int most = audiocore::largestPicture(media);
    if (needed.edits.picture && needed.edits.picture->size() > most) {
        needed.leftOut = "the picture was not saved, the old one stays: it has " +
                         std::to_string(needed.edits.picture->size()) + " bytes, the file takes " +
                         std::to_string(most) + " at the most";
        needed.edits.picture.reset();
    }
    if (stream.ranDry())
        throw audiocore::EndlessReading();
    return true;
}

/// The tag library leaves the file's length in a WMA header as it was; players guess the duration from it.
void correctAsfSize(CheckedStream& stream)
{
    static const TagLib::ByteVector fileProperties(
        "\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11\x8E\xE4\x00\xC0\x0C\x20\x53\x65", 16);
    constexpr unsigned long headerSearch = 1024 * 1024;
    constexpr long sizeOffset = 40;
    stream.seek(0);
    const TagLib::ByteVector header = stream.readBlock(headerSearch);
    const int object = header.find(fileProperties);
    if (object < 0)
        return;
    stream.seek(object + sizeOffset);
    stream.writeBlock(TagLib::ByteVector::fromLongLong(stream.length(), false));
}

/// Edits the copy and hands it to the device.
bool editCopy(const std::string& copy, const TagEdits& edits, std::string& error)
{
    CheckedStream stream(copy, CheckedStream::Mode::ReadWrite);
    if (!stream.isOpen()) {
        error = stream.openError();
        return false;
    }
    {
        const audiocore::MediaFile media = audiocore::openMedia(stream, audiocore::Purpose::Writing);
        error = media.file ? audiocore::writeTags(media, edits) : "the tag cannot be written";
        if (!error.empty())
            return false;
        if (media.format == AUDIO_FORMAT_WMA)
            correctAsfSize(stream);
    }
    if (!stream.flushToDevice()) {
        error = "the new file cannot be written, the disk may be full";
        return false;
    }
    return true;
}

/// Whether the copy now reads as the edits want it: the old file is not given up for one that does not.
bool readsAsWanted(const std::string& copy, const TagEdits& edits, std::string& error)
{
    Needed left;
    if (!neededEdits(copy, edits, left, error))
        return false;
    if (left.edits.isEmpty())
        return true;
    error = "the new file does not read back as written";
    return false;
}

/// Whether the copy plays as the original does: a tag that was written over music would show here.
bool playsAsBefore(const std::string& original, const std::string& copy, std::string& error)
{
    const auto before = audiocore::parsedMedia(original);
    const auto after = audiocore::parsedMedia(copy);
    const std::int64_t shift = std::abs(after->properties.milliseconds - before->properties.milliseconds);
    if (after->format == before->format && after->properties.sampleRate == before->properties.sampleRate &&
        shift <= longestShift)
        return true;
    error = "the new file does not play as the old one does";
    return false;
}

/// `target` is no link.
bool saveChanges(const std::string& target, const TagEdits& changes, std::string& error)
{
    std::FILE* lockFile = nullptr;
    const std::string copy = audiocore::platform::copyBeside(target, lockFile, error);
    const Lock lock(lockFile, [](std::FILE* file) { return file ? std::fclose(file) : 0; });
    if (copy.empty())
        return false;
    audiocore::platform::FileState state;
    if (audiocore::platform::stateOf(target, state) && state.links > 1)
        audiocore::logLine(target, "has further names (hard links); they keep the tags as they were");
    if (editCopy(copy, changes, error) && readsAsWanted(copy, changes, error) &&
        playsAsBefore(target, copy, error) && audiocore::platform::replaceFile(copy, target, error))
        return true;
    audiocore::platform::removeFile(copy);
    return false;
}
} // namespace

bool audiocore::saveEdits(const std::string& path, const TagEdits& edits)
{
    std::string error;
    Needed needed;
    const std::string target = platform::realPath(path);
    if (!target.empty())
        platform::removeLeftovers(target);
    bool saved = false;
    try {
        saved = holdsMusic(path, error) && neededEdits(path, edits, needed, error) &&
                (needed.edits.isEmpty() || saveChanges(target, needed.edits, error));
    } catch (const EndlessReading& reason) {
        error = reason.what();
        platform::removeLeftovers(target); // the copy's lock is gone, too
    }
    if (!saved)
        logLine(path, "the tag was not saved: " + error);
    else if (!needed.leftOut.empty())
        logLine(path, needed.leftOut);
    return saved && needed.leftOut.empty();
}
