#pragma once

#include "media/mpegframes.h"

#include <taglib/tbytevector.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// What stands between the readers of tags and the module that reads what they do not know.
namespace audiocore {
/// The bytes of one file, as much of them as may be read. One thread.
class ForeignBytes
{
public:
    virtual ~ForeignBytes() = default;
    virtual std::int64_t size() const = 0;
    /// The bytes read, fewer only at the end or on failure. Throws nothing: what calls it is no C++.
    virtual std::size_t readAt(std::int64_t position, void* bytes, std::size_t count) noexcept = 0;
    /// Whether reading is to stop.
    virtual bool isInterrupted() const noexcept = 0;
};

/// What a file of a foreign kind says.
struct ForeignMedia
{
    struct Picture
    {
        TagLib::ByteVector bytes;
        bool isFront = false;
    };

    MpegStream sound;
    std::array<TagLib::ByteVector, 6> texts; ///< by TagItemType; not always UTF-8
    std::vector<Picture> pictures;
};

/// What the module offers, under the name of its door.
struct LastWayDoor
{
    /// Reads with that one demuxer; false when it finds no sound.
    bool (*read)(ForeignBytes& bytes, const char* demuxer, ForeignMedia& media);
};
} // namespace audiocore
