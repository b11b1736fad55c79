#pragma once

#include <taglib/tiostream.h>

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace audiocore {
class TagScreen;

/// What a stream throws when its reader goes on for ever although nothing more comes. The tag library loses a
/// little memory then, so it is the last resort.
class EndlessReading : public std::runtime_error
{
public:
    EndlessReading() : std::runtime_error("is damaged: reading it would not end") {}
};

/// A file stream that remembers whether every write reached the system: the tag library itself does not tell.
/// Reads never ask for more memory than the file has bytes left, and there is an end to them: sizes in
/// damaged files send the tag library round and round. A stream that was read too much runs dry.
class CheckedStream : public TagLib::IOStream
{
public:
    enum class Mode { Read, ReadWrite };

    /// Opens a regular file, following links; anything else is not opened and never blocks.
    CheckedStream(const std::string& utf8Path, Mode mode);
    ~CheckedStream() override;

    /// Why the file is not open; empty when it is.
    const std::string& openError() const { return m_openError; }
    /// Whether the stream ran dry; what was read of it then means nothing.
    bool ranDry() const { return m_stepsLeft < 0 || m_bytesLeft < 0; }
    /// Hands everything to the system and the device; false when any write since opening failed.
    bool flushToDevice();

    /// What readBlock hands out goes through the screen, until null is set; the screen must live as long.
    void setScreen(TagScreen* screen) { m_screen = screen; }
    TagLib::ByteVector readUnscreened(unsigned long length);
    /// How often this thread has read or sought in any such stream.
    static std::int64_t stepsOfThread();

    TagLib::FileName name() const override;
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace) override;
    void removeBlock(unsigned long start, unsigned long length) override;
    bool readOnly() const override { return m_mode == Mode::Read; }
    bool isOpen() const override { return m_file != nullptr; }
    void seek(long offset, Position position = Beginning) override;
    long tell() const override { return m_position; }
    long length() override { return m_length; }
    void truncate(long length) override;

private:
    bool mayRead(unsigned long bytes);
    void fillBuffer(long position);
    void writeAt(long position, const TagLib::ByteVector& data);
    void moveTail(long from, long to);

    TagScreen* m_screen = nullptr;
    std::FILE* m_file = nullptr;
    Mode m_mode;
    long m_length = 0;
    long m_position = 0;
    TagLib::ByteVector m_buffer; ///< of the file from m_bufferStart on; tags are read in tiny pieces
    long m_bufferStart = 0;
    std::int64_t m_stepsLeft = 0;
    std::int64_t m_bytesLeft = 0;
    bool m_failed = false;
    std::string m_path;
    std::string m_openError;
};
} // namespace audiocore
