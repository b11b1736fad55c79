#pragma once

#include "audiocore/iaudiodecoder.h"
#include "tags/tagkind.h"

#include <memory>

namespace audiocore {
/// A music file opened by what is in it, whatever its name says.
struct MediaFile
{
    AudioFormat format = AUDIO_FORMAT_UNKNOWN;
    /// FFmpeg's name of what opens it, for playing.
    const char* demuxer = "";
    /// Where the audio starts, behind a tag at the file's beginning.
    long audioBegin = 0;
    /// Null when the stream holds no music.
    std::unique_ptr<TaggedFile> file;
};

/// Where the file goes on behind the ID3v2 tags at its beginning.
long behindId3v2(CheckedStream& stream);
/// The stream must outlive what is returned. The format is unknown when it holds no music.
MediaFile openMedia(CheckedStream& stream);
} // namespace audiocore
