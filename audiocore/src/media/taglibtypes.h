#pragma once

#include <taglib/taglib.h>
#if TAGLIB_MAJOR_VERSION < 2
#include <taglib/id3v2framefactory.h>
#endif

#include <cstddef>

namespace TagLib {
class IOStream;
}

// All that differs between the tag library's versions, as far as we use it.
namespace audiocore {
#if TAGLIB_MAJOR_VERSION >= 2
using StreamOffset = TagLib::offset_t;
using StreamStart = TagLib::offset_t;
using StreamSize = std::size_t;
#else
using StreamOffset = long;
using StreamStart = unsigned long; ///< where something is put in or taken out
using StreamSize = unsigned long;
#endif

/// A file of a class that asks who makes the frames of its ID3v2 tags: the library itself.
template <class File>
class FileWithId3v2 : public File
{
public:
#if TAGLIB_MAJOR_VERSION >= 2
    FileWithId3v2(TagLib::IOStream* stream, bool readProperties) : File(stream, readProperties) {}
#else
    FileWithId3v2(TagLib::IOStream* stream, bool readProperties)
        : File(stream, TagLib::ID3v2::FrameFactory::instance(), readProperties)
    {
    }
#endif
};
} // namespace audiocore
