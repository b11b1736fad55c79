#include "checkedstream.h"

#include "checkedmath.h"
#include "platform.h"
#include "tagscreen.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

using audiocore::CheckedStream;
using TagLib::ByteVector;

namespace {
constexpr long blockSize = 256 * 1024;
constexpr unsigned int bufferSize = 4 * 1024;
// Far more than reading any whole file takes, and a second at the most.
constexpr std::int64_t stepsToRead = 300000;
constexpr std::int64_t bytesToRead = 256 << 20;
constexpr std::int64_t dryStepsBorne = 5000000; // they cost next to nothing
// Writing goes through whole files, some of them page by page.
constexpr std::int64_t bytesAStepWriting = 128;
constexpr std::int64_t timesThroughWriting = 8;

thread_local std::int64_t stepsTaken = 0;
} // namespace

CheckedStream::CheckedStream(const std::string& utf8Path, Mode mode) : m_mode(mode), m_path(utf8Path)
{
    platform::FileState state;
    m_file = platform::openFile(utf8Path, mode == Mode::ReadWrite);
    if (!m_file) {
        m_openError = std::strerror(errno);
    } else if (!platform::stateOf(m_file, state) || !state.regular) {
        m_openError = "not a regular file";
        std::fclose(std::exchange(m_file, nullptr));
    }
    m_length = m_file ? long(state.size) : 0;
    const bool writing = mode == Mode::ReadWrite;
    m_stepsLeft = stepsToRead + (writing ? m_length / bytesAStepWriting : 0);
    m_bytesLeft = bytesToRead + (writing ? m_length * timesThroughWriting : 0);
}

CheckedStream::~CheckedStream()
{
    if (m_file)
        std::fclose(m_file);
}

bool CheckedStream::flushToDevice()
{
    return m_file && !m_failed && !ranDry() && platform::syncToDevice(m_file);
}

TagLib::FileName CheckedStream::name() const
{
    // Only ever compared and printed by the tag library; the file is already open.
#ifdef _WIN32
    return TagLib::FileName(m_path.c_str());
#else
    return m_path.c_str();
#endif
}

std::int64_t CheckedStream::stepsOfThread()
{
    return stepsTaken;
}

bool CheckedStream::mayRead(unsigned long bytes)
{
    ++stepsTaken;
    if (--m_stepsLeft < -dryStepsBorne)
        throw EndlessReading();
    m_bytesLeft -= std::int64_t(bytes);
    return !ranDry();
}

ByteVector CheckedStream::readBlock(unsigned long length)
{
    return m_screen ? m_screen->read(*this, length) : readUnscreened(length);
}

ByteVector CheckedStream::readUnscreened(unsigned long length)
{
    const long left = std::max(0L, m_length - m_position);
    const auto count =
        static_cast<unsigned int>(std::min<unsigned long>(length, static_cast<unsigned long>(left)));
    if (!mayRead(count) || !m_file || count == 0)
        return ByteVector();
    ByteVector block;
    if (count < bufferSize) {
        if (m_position < m_bufferStart || m_position + long(count) > m_bufferStart + long(m_buffer.size()))
            fillBuffer(m_position);
        block = m_buffer.mid(static_cast<unsigned int>(m_position - m_bufferStart), count);
    } else {
        block.resize(count);
        block.resize(static_cast<unsigned int>(platform::readAt(m_file, m_position, block.data(), count)));
    }
    m_position += long(block.size());
    return block;
}

void CheckedStream::fillBuffer(long position)
{
    m_buffer.resize(bufferSize);
    m_buffer.resize(
        static_cast<unsigned int>(platform::readAt(m_file, position, m_buffer.data(), bufferSize)));
    m_bufferStart = position;
}

void CheckedStream::writeBlock(const ByteVector& data)
{
    if (!m_file || m_mode == Mode::Read || data.isEmpty())
        return;
    if (platform::writeAt(m_file, m_position, data.data(), data.size()) != data.size())
        m_failed = true;
    m_buffer.clear();
    m_position += long(data.size());
    m_length = std::max(m_length, m_position);
}

void CheckedStream::writeAt(long position, const ByteVector& data)
{
    seek(position);
    writeBlock(data);
}

/// Moves everything from `from` on to start at `to`, without overwriting what is still to be moved.
void CheckedStream::moveTail(long from, long to)
{
    const long tail = m_length - from;
    if (to < from) {
        for (long done = 0; done < tail && !m_failed; done += blockSize) {
            seek(from + done);
            writeAt(to + done, readBlock(static_cast<unsigned long>(std::min(blockSize, tail - done))));
        }
        return;
    }
    for (long left = tail; left > 0 && !m_failed;) {
        const long size = std::min(blockSize, left);
        left -= size;
        seek(from + left);
        writeAt(to + left, readBlock(static_cast<unsigned long>(size)));
    }
}

void CheckedStream::insert(const ByteVector& data, unsigned long start, unsigned long replace)
{
    const long begin = std::min(long(start), m_length);
    const long replacedEnd = std::min(begin + long(replace), m_length);
    const long newEnd = begin + long(data.size());
    const long newLength = m_length - replacedEnd + newEnd;
    if (newEnd != replacedEnd)
        moveTail(replacedEnd, newEnd);
    writeAt(begin, data);
    if (newLength < m_length)
        truncate(newLength);
    seek(newEnd);
}

void CheckedStream::removeBlock(unsigned long start, unsigned long length)
{
    insert(ByteVector(), start, length);
}

void CheckedStream::seek(long offset, Position position)
{
    mayRead(0);
    const long base = position == Beginning ? 0 : position == Current ? m_position : m_length;
    m_position = std::max(0L, long(checked::sum(base, offset)));
}

void CheckedStream::truncate(long length)
{
    if (!m_file || m_mode == Mode::Read)
        return;
    if (!platform::truncateTo(m_file, length))
        m_failed = true;
    m_buffer.clear();
    m_length = length;
}
