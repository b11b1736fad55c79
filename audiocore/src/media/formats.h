#pragma once

#include "audiocore/iaudiodecoder.h"
#include "media/mpegframes.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace audiocore {
/// What there is to say about a format without doing anything with its tags. Each has one row; what is done
/// with a file goes by its format or by the kind of its tag library's object.
struct FormatRow
{
    struct Magic
    {
        std::size_t place;
        std::string_view bytes;
    };

    AudioFormat format;
    /// Bytes that a file of it has behind the tags at its beginning. All of them; none where only frames
    /// tell.
    std::array<Magic, 2> magic;
    /// FFmpeg's name of the one demuxer, for playing and for fingerprints. It opens no other file.
    const char* demuxer;
    /// Tells length and rates by the frames; null where the container tells.
    MpegStream (*measure)(TagLib::IOStream& stream, long begin);
};

/// Null for AUDIO_FORMAT_UNKNOWN.
const FormatRow* rowOf(AudioFormat format);

/// So many bytes tell the format, where it has any that do.
constexpr std::size_t longestMagic = 12;
/// AUDIO_FORMAT_UNKNOWN for what has no magic bytes.
AudioFormat formatByMagic(std::string_view head);

/// The demuxers of all formats, with commas.
std::string allDemuxers();
} // namespace audiocore
