#include "tags/tagediting.h"

#include "base/filebytes.h"
#include "media/checkedstream.h"
#include "tags/parsedmedia.h"
#include "tags/pictures.h"
#include "tags/tagwriting.h"

#include <cstdint>
#include <cstdlib>

using audiocore::CheckedStream;
using audiocore::NeededEdits;
using audiocore::ParsedMedia;
using audiocore::TagEdits;

namespace {
constexpr std::int64_t longestShift = 100; // milliseconds

bool write(base::FileBytes& copy, const std::string& path, const TagEdits& edits, std::string& error)
{
    CheckedStream stream(copy, path, CheckedStream::Mode::ReadWrite);
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
bool readsAsWanted(base::FileBytes& copy, const std::string& path, const TagEdits& edits, std::string& error)
{
    CheckedStream stream(copy, path, CheckedStream::Mode::Read);
    NeededEdits left;
    if (!neededEdits(stream, edits, left, error))
        return false;
    if (left.edits.isEmpty())
        return true;
    error = "the new file does not read back as written";
    return false;
}

/// Whether the copy plays as the original does: a tag that was written over music would show here.
bool playsAs(const ParsedMedia& original, const ParsedMedia& copy, std::string& error)
{
    const std::int64_t shift = std::abs(copy.properties.milliseconds - original.properties.milliseconds);
    if (copy.format == original.format && copy.properties.sampleRate == original.properties.sampleRate &&
        shift <= longestShift)
        return true;
    error = "the new file does not play as the old one does";
    return false;
}
} // namespace

const char* const audiocore::noMusic = "it holds no music that can be read";

bool audiocore::neededEdits(CheckedStream& stream, const TagEdits& edits, NeededEdits& needed,
                            std::string& error)
{
    if (!stream.isOpen()) {
        error = stream.openError();
        return false;
    }
    const MediaFile media = openMedia(stream, Purpose::Reading);
    if (media.format == AUDIO_FORMAT_UNKNOWN) {
        error = noMusic;
        return false;
    }
    needed.edits = changesOf(edits, readTags(media));
    const unsigned int most = media.file->largestPicture();
    if (needed.edits.picture && needed.edits.picture->size() > most) {
        needed.leftOut = "the picture was not saved, the old one stays: it has " +
                         std::to_string(needed.edits.picture->size()) + " bytes, the file takes " +
                         std::to_string(most) + " at the most";
        needed.edits.picture.reset();
    }
    if (stream.ranDry())
        throw EndlessReading();
    if (stream.readFailed())
        error = "it cannot be read to its end";
    return !stream.readFailed();
}

bool audiocore::editCopy(base::FileBytes& copy, const std::string& path, const TagEdits& edits,
                         const ParsedMedia& original, std::string& error)
{
    return write(copy, path, edits, error) && readsAsWanted(copy, path, edits, error) &&
           playsAs(original, *parsedMedia(copy, path), error);
}
