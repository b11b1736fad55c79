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

/// Writes the edits into the copy of a file that was read as `original`. Why it did not work, empty on
/// success.
std::string write(base::FileBytes& copy, const std::string& path, const TagEdits& edits,
                  const ParsedMedia& original)
{
    CheckedStream stream(copy, path, CheckedStream::Mode::ReadWrite);
    if (!stream.isOpen())
        return stream.openError();
    {
        const audiocore::MediaFile media = audiocore::openMedia(stream);
        std::string error =
            media.file ? audiocore::writeTags(media, edits, original.content) : audiocore::cannotBeWritten;
        if (!error.empty())
            return error;
    }
    return stream.flushToDevice() ? std::string() : "the new file cannot be written, the disk may be full";
}

/// Whether the copy plays as the original does: a tag that was written over music would show here.
bool playsAs(const ParsedMedia& original, const ParsedMedia& copy)
{
    const std::int64_t shift = std::abs(copy.properties.milliseconds - original.properties.milliseconds);
    return copy.format == original.format && copy.properties.sampleRate == original.properties.sampleRate &&
           shift <= longestShift;
}

/// Whether the copy now reads as the edits want it, and plays: the old file is not given up for one that does
/// not. Why not, empty when it does.
std::string checked(base::FileBytes& copy, const std::string& path, const TagEdits& edits,
                    const ParsedMedia& original)
{
    CheckedStream stream(copy, path, CheckedStream::Mode::Read);
    ParsedMedia written;
    if (const std::string error = audiocore::readMedia(stream, written); !error.empty())
        return "the new file " + error;
    if (!audiocore::neededEdits(written, edits).edits.isEmpty())
        return "the new file does not read back as written";
    return playsAs(original, written) ? std::string() : "the new file does not play as the old one does";
}
} // namespace

NeededEdits audiocore::neededEdits(const ParsedMedia& media, const TagEdits& edits)
{
    NeededEdits needed;
    needed.edits = changesOf(edits, media.content);
    const unsigned int most = media.largestPicture;
    if (needed.edits.picture && needed.edits.picture->size() > most) {
        needed.leftOut = "the picture was not saved, the old one stays: it has " +
                         std::to_string(needed.edits.picture->size()) + " bytes, the file takes " +
                         std::to_string(most) + " at the most";
        needed.edits.picture.reset();
    }
    return needed;
}

bool audiocore::editCopy(base::FileBytes& copy, const std::string& path, const TagEdits& edits,
                         const ParsedMedia& original, std::string& error)
{
    error = write(copy, path, edits, original);
    if (error.empty())
        error = checked(copy, path, edits, original);
    return error.empty();
}
