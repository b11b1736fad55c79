#pragma once

#include "audiocore/iaudiodecoder.h"

#include <taglib/tfile.h>

#include <memory>
#include <vector>

namespace audiocore {
class CheckedStream;

/// A music file opened by what is in it, whatever its name says.
struct MediaFile
{
    AudioFormat format = AUDIO_FORMAT_UNKNOWN;
    /// Where the audio starts, behind a tag at the file's beginning.
    long audioBegin = 0;
    /// Null when the stream holds no music, or, read only, music without any tag.
    std::unique_ptr<TagLib::File> file;
    bool isWhole = true;             ///< whether the library was shown all that it would write anew
    CheckedStream* stream = nullptr; ///< what the file reads
};

enum class Purpose {
    Reading,
    Writing ///< a file is made also for music without a tag
};

/// The stream must outlive what is returned. The format is unknown when it holds no music.
MediaFile openMedia(CheckedStream& stream, Purpose purpose);
/// The tags that a file of its kind has now, the one that is believed first at the front.
std::vector<TagLib::Tag*> tagsOf(const MediaFile& media);
} // namespace audiocore
