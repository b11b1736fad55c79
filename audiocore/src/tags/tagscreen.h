#pragma once

#include "media/checkedstream.h"
#include "tags/mediafile.h"

#include <taglib/tbytevector.h>

#include <array>
#include <utility>
#include <vector>

namespace audiocore {
/// Stands between a file and the tag library while the library opens it, and shows it of each tag only what
/// we ask for, plain and bounded: the library inflates what is compressed, nests without an end and takes
/// many times a text's bytes, all by what the file says. Everything else of a tag stays in the file, unread;
/// offsets are the file's own.
///
/// The library reads a tag by its head and then its body in one piece; that is how bodies are known wherever
/// they lie.
class TagScreen : public StreamScreen
{
public:
    /// The music starts at `audioBegin`. What the library itself will write anew is shown as it is, unless
    /// that is too much.
    TagScreen(AudioFormat format, CheckedStream& stream, long audioBegin, Purpose purpose);

    /// Whether nothing was kept back for want of room.
    bool isWhole() const { return m_whole; }
    TagLib::ByteVector read(CheckedStream& stream, unsigned long length) override;

private:
    enum class Body { None, Id3v2, Ape, FlacBlock };
    struct Expected
    {
        Body body = Body::None;
        long position = 0;
        unsigned long length = 0;
        int type = 0; ///< of a FLAC block
    };

    struct LastRead
    {
        unsigned int size;
        unsigned int word; ///< of two bytes
    };

    bool isExpected(long position, unsigned long length) const;
    TagLib::ByteVector readPlain(CheckedStream& stream, unsigned long length);
    TagLib::ByteVector readLarge(CheckedStream& stream, unsigned long length);
    TagLib::ByteVector readPiece(CheckedStream& stream, unsigned long length);
    TagLib::ByteVector readBody(CheckedStream& stream);
    TagLib::ByteVector readId3v2(CheckedStream& stream, const Expected& expected);
    TagLib::ByteVector readFlacBlock(CheckedStream& stream, const Expected& expected);
    TagLib::ByteVector readAskedBlock(CheckedStream& stream, const Expected& expected);
    TagLib::ByteVector readAsf(CheckedStream& stream, unsigned long length);
    TagLib::ByteVector readAsfText(CheckedStream& stream, unsigned long length);
    void noteHead(TagLib::ByteVector& block, long position);
    void noteFlacHead(TagLib::ByteVector& head, long position);
    void boundOggComments(CheckedStream& stream, long audioBegin);
    void patch(TagLib::ByteVector& block, long position) const;

    const AudioFormat m_format;
    const Purpose m_purpose;
    bool m_whole = true;
    long m_bytesLeft;
    unsigned long m_asfTextLeft;
    Expected m_expected;
    TagLib::ByteVector m_id3v2Head; ///< of the body that is expected
    std::array<LastRead, 3> m_lastReads{};
    std::vector<std::pair<long, char>> m_patches; ///< bytes that are shown otherwise, by their place
};
} // namespace audiocore
