#pragma once

#include "audiocore/iaudiodecoder.h"
#include "audiocore/tagitem.h"
#include "media/mpegframes.h"
#include "tags/tagfields.h"

#include <taglib/tbytevector.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace base {
class FileBytes;
}

namespace audiocore {
class CheckedStream;

/// What one reading of a file gave, for its tag object, its decoder and whoever edits it alike.
struct ParsedMedia
{
    struct Item
    {
        TagItemType type;
        std::u32string text; ///< empty for the picture
        TagLib::ByteVector picture;
    };

    AudioFormat format = AUDIO_FORMAT_UNKNOWN;
    const char* demuxer = ""; ///< FFmpeg's name of what opens it, for playing
    MpegStream properties;
    std::int64_t audioBegin = 0;      ///< behind a tag at the file's beginning
    std::vector<Item> items;          ///< texts by type, the picture last
    TagContent content;               ///< what the items say
    std::uint32_t largestPicture = 0; ///< bytes of what may be written into the file
};

/// Reads what is in the stream. Why there is nothing to be had, without its subject; empty on success. Throws
/// EndlessReading.
std::string readMedia(CheckedStream& stream, ParsedMedia& parsed);

/// Reads the file, or hands out the thread's last reading of it when the file did not change since; the
/// readings before the last one are forgotten, so that open objects cost nothing. Never null; a file that
/// cannot be read has no items and no properties. Any thread.
std::shared_ptr<const ParsedMedia> parsedMedia(const std::string& path);
/// Reads the bytes of a file, anew with every call; the path is for messages alone.
std::shared_ptr<const ParsedMedia> parsedMedia(base::FileBytes& file, const std::string& path);
} // namespace audiocore
