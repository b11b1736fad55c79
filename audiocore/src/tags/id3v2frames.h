#pragma once

#include "tags/fieldlist.h"

#include <taglib/tbytevector.h>

#include <cstdint>
#include <optional>
#include <string_view>

/// How an ID3v2 tag lies in a file and the frames in its body, for whoever reads them.
namespace audiocore::id3v2 {
constexpr unsigned int headerSize = 10;
constexpr unsigned int largestBody = (1u << 28) - 1;
constexpr char unsynchronised = char(0x80);
constexpr char extended = 0x40; ///< in version 2: compressed
constexpr char withFooter = 0x10;
constexpr char frameUnsynchronised = 0x02;

constexpr unsigned int idSize(int version)
{
    return version == 2 ? 3 : 4;
}
constexpr unsigned int frameHeaderSize(int version)
{
    return version == 2 ? 6 : 10;
}

inline std::string_view viewOf(const TagLib::ByteVector& bytes)
{
    return {bytes.data(), bytes.size()};
}

/// What a tag's header tells of its size.
struct TagSize
{
    unsigned int body = 0;
    unsigned int footer = 0;

    unsigned int whole() const { return headerSize + body + footer; }
};
/// Of the tag that starts with these bytes; nothing where none does, as with a size that none can have.
std::optional<TagSize> sizeOfTag(std::string_view bytes);

/// Whether some version says the item under this id.
bool says(std::string_view id, int type);
/// The type of what the frame says, or the first number above them.
int typeOf(std::string_view id);
bool isPicture(std::string_view id);
bool looksLikeId(std::string_view id);

/// The numbers are in the bytes from there on.
unsigned int numberAt(const char* bytes, unsigned int count);
unsigned int fromSevenBits(const char* bytes);
/// Up to where there is more than zeros.
unsigned int sizeWithoutFilling(std::string_view bytes);
/// Writes a frame's size as the version has it.
void putFrameSize(int version, char* place, unsigned int size);

/// Takes the zeros out that were put behind bytes of 0xFF; the size then.
unsigned int resynchronise(char* bytes, unsigned int size);

/// What a frame's flags put round what it says.
struct Wrapping
{
    bool packed; ///< compressed or encrypted
    bool unsynchronised;
    unsigned int before; ///< so many bytes
};
Wrapping wrappingOf(int version, char flags);

/// Where in the body the frames begin, which is resynchronised for that if the header says so; nothing where
/// it cannot be taken apart.
std::optional<unsigned int> beginOfFrames(const TagLib::ByteVector& header, TagLib::ByteVector& body);

/// The size of the version 4 frame with this head, that begins behind it at `next`. Some programs write it as
/// the older version has it.
template <class Body>
unsigned int newestFrameSize(const char* head, unsigned int next, unsigned int bodySize, const Body& body)
{
    const unsigned int plain = numberAt(head + 4, 4);
    const unsigned int size = fromSevenBits(head + 4);
    const auto goesOn = [&](unsigned int bytes) {
        const std::uint64_t following = std::uint64_t(next) + bytes;
        if (following >= bodySize)
            return following == bodySize;
        const auto read = body(static_cast<unsigned int>(following), 4u);
        const std::string_view id(read.data(), read.size());
        return (id.size() == 4 && looksLikeId(id)) || sizeWithoutFilling(id) == 0;
    };
    return size != plain && !goesOn(size) && goesOn(plain) ? plain : size;
}

/// Goes from frame to frame: `body` gives bytes by position and size, as far as there are any; `take` gets
/// each head, where it lies and the frame's size without it, and tells whether to go on. Where the frames
/// end: at zeros, or where one says to be longer than what is left. Frames of no bytes and those with ids
/// that nobody has heard of, letters or not, are frames: other readers pass over them, too.
template <class Body, class Take>
unsigned int eachFrame(int version, unsigned int bodySize, const Body& body, Take take)
{
    const unsigned int header = frameHeaderSize(version);
    unsigned int position = 0;
    for (bool goOn = true; goOn && bodySize - position >= header;) {
        const auto read = body(position, header);
        const std::string_view head(read.data(), read.size());
        if (head.size() < header || head.front() == '\0')
            break;
        const unsigned int next = position + header;
        const unsigned int size = version == 4 ? newestFrameSize(head.data(), next, bodySize, body)
                                               : numberAt(head.data() + idSize(version), idSize(version));
        if (size > bodySize - next)
            break;
        goOn = take(head, position, size);
        position = next + size;
    }
    return position;
}
} // namespace audiocore::id3v2
