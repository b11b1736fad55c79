#pragma once

#include "base/filebytes.h"
#include "media/taglibtypes.h"

#include <taglib/tiostream.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace audiocore {
class CheckedStream;

/// What stands between a stream and its reader, and shows of the bytes what the reader can bear.
class StreamScreen
{
public:
    virtual ~StreamScreen() = default;
    /// What the reader gets to see of the next bytes.
    virtual TagLib::ByteVector read(CheckedStream& stream, unsigned long length) = 0;
};

/// What a stream throws when its reader goes on for ever although nothing more comes. The tag library loses a
/// little memory then, so it is the last resort.
class EndlessReading : public std::runtime_error
{
public:
    EndlessReading() : std::runtime_error("is damaged: reading it would not end") {}
};

/// A file stream that remembers whether every write reached the system: the tag library itself does not tell.
/// Reads never ask for more memory than the file has bytes left, nor for more than a picture and its tag
/// take, and there is an end to all work, in proportion to the file's size: sizes in damaged files send the
/// tag library round and round. A stream that was worked on too much runs dry: nothing is read from it or
/// written to it any more.
class CheckedStream : public TagLib::IOStream
{
public:
    enum class Mode { Read, ReadWrite };

    /// Opens a regular file, following links; anything else is not opened and never blocks.
    CheckedStream(const std::string& utf8Path, Mode mode);
    /// Works on the bytes of a file that stays the caller's; the path is for messages alone.
    CheckedStream(base::FileBytes& file, const std::string& utf8Path, Mode mode);

    /// Why the file is not open; empty when it is.
    const std::string& openError() const { return m_openError; }
    /// Whether the stream ran dry; what was read of it then means nothing.
    bool ranDry() const { return m_steps > m_mostSteps || m_bytes > m_mostBytes; }
    /// The reads, writes and seeks so far, and the bytes they moved.
    std::int64_t steps() const { return m_steps; }
    std::int64_t bytes() const { return m_bytes; }
    /// Whether bytes that the file has could not be read; what was read then means nothing, either.
    bool readFailed() const { return m_readFailed; }
    /// Hands everything to the system and the device; false when any read or write since opening failed.
    bool flushToDevice();

    /// What readBlock hands out goes through the screen, until null is set; the screen must live as long.
    void setScreen(StreamScreen* screen) { m_screen = screen; }
    TagLib::ByteVector readUnscreened(StreamSize length);
    TagLib::ByteVector readAt(StreamOffset position, StreamSize length)
    {
        seek(position);
        return readBlock(length);
    }
    /// How often this thread has read or sought in any such stream.
    static std::int64_t stepsOfThread();

    TagLib::FileName name() const override;
    TagLib::ByteVector readBlock(StreamSize length) override;
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data, StreamStart start, StreamSize replace) override;
    void removeBlock(StreamStart start, StreamSize length) override;
    bool readOnly() const override { return m_mode == Mode::Read; }
    bool isOpen() const override { return m_file != nullptr; }
    void seek(StreamOffset offset, Position position = Beginning) override;
    StreamOffset tell() const override { return m_position; }
    StreamOffset length() override { return m_length; }
    void truncate(StreamOffset length) override;

private:
    void takeFile();
    bool mayGoOn(StreamSize bytes);
    TagLib::ByteVector readBuffered(unsigned int count);
    TagLib::ByteVector readThrough(unsigned int count);
    void noteRead(unsigned int got, unsigned int count);
    void fillBuffer(StreamOffset position);
    void writeAt(StreamOffset position, const TagLib::ByteVector& data);
    void moveTail(StreamOffset from, StreamOffset to);
    void moveBlock(StreamOffset from, StreamOffset to, StreamOffset size);

    StreamScreen* m_screen = nullptr;
    std::unique_ptr<base::FileBytes> m_opened;
    base::FileBytes* m_file; ///< null when it is not open
    Mode m_mode;
    StreamOffset m_length = 0;
    StreamOffset m_position = 0;
    TagLib::ByteVector m_buffer; ///< of the file from m_bufferStart on; tags are read in tiny pieces
    StreamOffset m_bufferStart = 0;
    std::int64_t m_steps = 0;
    std::int64_t m_mostSteps = 0;
    std::int64_t m_bytes = 0;
    std::int64_t m_mostBytes = 0;
    bool m_failed = false; ///< to write
    bool m_readFailed = false;
    std::string m_path;
    std::string m_openError;
};
} // namespace audiocore
