#pragma once

#include "media/checkedstream.h"

#include <taglib/tbytevector.h>

#include <functional>

namespace audiocore {
/// Stands between a file and the tag library while the library opens it, and shows it of each tag only what
/// we ask for, plain and bounded: the library inflates what is compressed, nests without an end and takes
/// many times a text's bytes, all by what the file says. Everything else of a tag stays in the file, unread;
/// offsets are the file's own.
///
/// The library reads a tag by its head and then its body in one piece; that is how bodies are known wherever
/// they lie. ID3v2 and APE tags are known here, since files of most formats have them; a format whose own
/// tags lie otherwise adds what it takes to show them.
class TagScreen : public StreamScreen
{
public:
    TagScreen();
    /// ID3v2 tags end there at the latest, whatever they say.
    explicit TagScreen(long tagsEnd);

    TagLib::ByteVector read(CheckedStream& stream, unsigned long length) override;

protected:
    struct Piece
    {
        long position = 0;
        unsigned long length = 0;
    };
    using BodyReader = std::function<TagLib::ByteVector(CheckedStream&, const Piece&)>;

    /// Makes of a piece that no head told of what the library gets to see, and notes what it tells of the
    /// next one.
    virtual void show(TagLib::ByteVector& block, long position);
    /// The next piece, if it is this one, is the body of something whose head was read.
    void expect(const Piece& body, BodyReader reader);

    TagLib::ByteVector readPlain(CheckedStream& stream, unsigned long length);
    /// Bytes that may still be kept.
    long room() const { return m_bytesLeft; }
    void limitRoom(long bytes);

private:
    TagLib::ByteVector readLarge(CheckedStream& stream, unsigned long length);
    TagLib::ByteVector readApe(CheckedStream& stream, const Piece& body);
    TagLib::ByteVector readId3v2(CheckedStream& stream, const Piece& body);

    long m_bytesLeft;
    const long m_tagsEnd;
    Piece m_expected;
    BodyReader m_body;              ///< of the piece that is expected; none when none is
    TagLib::ByteVector m_id3v2Head; ///< of the body that is expected
};

/// The tag library reads all tags at once, when its file is made, and it is for this reading only that it
/// gets them screened.
class ScreenedReading
{
public:
    ScreenedReading(CheckedStream& stream, StreamScreen& screen) : m_stream(stream)
    {
        m_stream.setScreen(&screen);
        m_stream.seek(0);
    }
    ~ScreenedReading() { m_stream.setScreen(nullptr); }
    ScreenedReading(const ScreenedReading&) = delete;
    ScreenedReading& operator=(const ScreenedReading&) = delete;

private:
    CheckedStream& m_stream;
};
} // namespace audiocore
