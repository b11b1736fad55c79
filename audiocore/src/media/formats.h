#pragma once

#include "audiocore/iaudiodecoder.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace TagLib {
class IOStream;
}

namespace audiocore {
struct TagKind;

/// All that tells one format from another. Each has a row for each way to begin, and what is done with its
/// tags stands in one file of `tags/`, which the rows name. Rows without one are of what FFmpeg alone knows.
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
    /// Whether its frames begin within `searchLength` bytes from `begin` on; null where the magic bytes tell.
    bool (*findsFrames)(TagLib::IOStream& stream, long begin, long searchLength);
    /// FFmpeg's name of the one demuxer, for playing and for fingerprints. It opens no other file.
    const char* demuxer;
    const TagKind* tags; ///< null where FFmpeg reads them (tags/lastway.h)
};

/// So many bytes tell the format, where it has any that do.
constexpr std::size_t longestMagic = 12;
/// Null for what has no magic bytes.
const FormatRow* rowByMagic(std::string_view head);
/// Null for what has no frames from `begin` on.
const FormatRow* rowByFrames(TagLib::IOStream& stream, long begin);

/// The demuxers of all formats, with commas.
std::string allDemuxers();
} // namespace audiocore
