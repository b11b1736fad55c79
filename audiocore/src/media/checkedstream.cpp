#include "media/checkedstream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <optional>

using audiocore::CheckedStream;
using audiocore::StreamOffset;
using audiocore::StreamSize;
using TagLib::ByteVector;

namespace {
constexpr StreamOffset blockSize = 256 * 1024;
constexpr unsigned int bufferSize = 4 * 1024;
constexpr StreamSize largestBlock = 96 * 1024 * 1024; // the largest picture, and 64 MB beyond
// Loops that end by themselves end within these; each further one costs, and says nothing more.
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
constexpr std::int64_t dryStepsBorne = 2000;
#else
constexpr std::int64_t dryStepsBorne = 500000;
#endif

struct Budget
{
    std::int64_t steps; ///< about a microsecond each
    std::int64_t bytes; ///< a good gigabyte a second
};

/// Far more than reading any file of the size takes.
Budget toRead(std::int64_t size)
{
    constexpr std::int64_t mostSteps = 300000;
    constexpr std::int64_t mostBytes = 256 << 20;
    return {std::min(mostSteps, 10000 + size / 64), std::min(mostBytes, (16 << 20) + size * 8)};
}

/// Writing goes through whole files, some of them by small pages, and may put a picture in.
Budget toWrite(std::int64_t size)
{
    constexpr std::int64_t bytesAStep = 16;
    constexpr std::int64_t timesThrough = 16;
    constexpr std::int64_t newBytes = 256 << 20;
    return {toRead(size).steps + size / bytesAStep, newBytes + size * timesThrough};
}

thread_local std::int64_t stepsTaken = 0;
} // namespace

CheckedStream::CheckedStream(const std::string& utf8Path, Mode mode)
    : m_opened(base::SystemFile::open(utf8Path, mode == Mode::ReadWrite)), m_file(m_opened.get()),
      m_mode(mode), m_path(utf8Path)
{
    if (!m_file)
        m_openError = std::strerror(errno);
    takeFile();
}

CheckedStream::CheckedStream(base::FileBytes& file, const std::string& utf8Path, Mode mode)
    : m_file(&file), m_mode(mode), m_path(utf8Path)
{
    takeFile();
}

void CheckedStream::takeFile()
{
    const std::optional<std::int64_t> size = m_file ? m_file->size() : std::nullopt;
    if (m_file && !size) {
        m_openError = "not a regular file";
        m_file = nullptr;
        m_opened.reset();
    }
    m_length = StreamOffset(size.value_or(0));
    const Budget budget = m_mode == Mode::ReadWrite ? toWrite(m_length) : toRead(m_length);
    m_mostSteps = budget.steps;
    m_mostBytes = budget.bytes;
}

bool CheckedStream::flushToDevice()
{
    return m_file && !m_failed && !m_readFailed && !ranDry() && m_file->sync();
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

bool CheckedStream::mayGoOn(StreamSize bytes)
{
    ++stepsTaken;
    if (++m_steps > m_mostSteps + dryStepsBorne)
        throw EndlessReading();
    // What is refused is not moved, but enough to tell that it was too much.
    m_bytes = std::min(m_bytes + std::int64_t(bytes), m_mostBytes + 1);
    return !ranDry();
}

ByteVector CheckedStream::readBlock(StreamSize length)
{
    return m_screen ? m_screen->read(*this, length) : readUnscreened(length);
}

ByteVector CheckedStream::readUnscreened(StreamSize length)
{
    const auto left = static_cast<StreamSize>(std::max(StreamOffset(0), m_length - m_position));
    const StreamSize size = std::min(length, left);
    if (size > largestBlock)
        m_bytes = m_mostBytes + 1;
    if (!mayGoOn(size) || !m_file || size == 0)
        return ByteVector();
    const auto count = static_cast<unsigned int>(size);
    return count < bufferSize ? readBuffered(count) : readThrough(count);
}

ByteVector CheckedStream::readBuffered(unsigned int count)
{
    if (m_position < m_bufferStart ||
        m_position + StreamOffset(count) > m_bufferStart + StreamOffset(m_buffer.size()))
        fillBuffer(m_position);
    ByteVector block = m_buffer.mid(static_cast<unsigned int>(m_position - m_bufferStart), count);
    noteRead(block.size(), count);
    return block;
}

ByteVector CheckedStream::readThrough(unsigned int count)
{
    ByteVector block(count);
    const std::size_t got = m_file->readAt(m_position, block.data(), count);
    block.resize(static_cast<unsigned int>(got));
    noteRead(block.size(), count);
    return block;
}

void CheckedStream::noteRead(unsigned int got, unsigned int count)
{
    m_readFailed = m_readFailed || got < count;
    m_position += StreamOffset(got);
}

void CheckedStream::fillBuffer(StreamOffset position)
{
    m_buffer.resize(bufferSize);
    m_buffer.resize(static_cast<unsigned int>(m_file->readAt(position, m_buffer.data(), bufferSize)));
    m_bufferStart = position;
}

void CheckedStream::writeBlock(const ByteVector& data)
{
    if (!m_file || m_mode == Mode::Read || data.isEmpty())
        return;
    if (!mayGoOn(data.size()))
        return;
    if (m_file->writeAt(m_position, data.data(), data.size()) != data.size())
        m_failed = true;
    m_buffer.clear();
    m_position += StreamOffset(data.size());
    m_length = std::max(m_length, m_position);
}

void CheckedStream::writeAt(StreamOffset position, const ByteVector& data)
{
    seek(position);
    writeBlock(data);
}

/// Moves everything from `from` on to start at `to`, without overwriting what is still to be moved.
void CheckedStream::moveTail(StreamOffset from, StreamOffset to)
{
    const StreamOffset tail = m_length - from;
    if (to < from) {
        for (StreamOffset done = 0; done < tail && !m_failed && !ranDry(); done += blockSize)
            moveBlock(from + done, to + done, std::min(blockSize, tail - done));
        return;
    }
    for (StreamOffset left = tail; left > 0 && !m_failed && !ranDry();) {
        const StreamOffset size = std::min(blockSize, left);
        left -= size;
        moveBlock(from + left, to + left, size);
    }
}

/// What takes no room takes none afterwards, where the system can do it.
void CheckedStream::moveBlock(StreamOffset from, StreamOffset to, StreamOffset size)
{
    if (m_file->isHole(from, size) && m_file->makeHole(to, size)) {
        m_buffer.clear();
        m_length = std::max(m_length, to + size);
        return;
    }
    seek(from);
    writeAt(to, readBlock(static_cast<StreamSize>(size)));
}

void CheckedStream::insert(const ByteVector& data, StreamStart start, StreamSize replace)
{
    const auto begin = StreamOffset(std::min(StreamSize(start), StreamSize(m_length)));
    const auto replacedEnd = begin + StreamOffset(std::min(replace, StreamSize(m_length - begin)));
    const StreamOffset newEnd = begin + StreamOffset(data.size());
    const StreamOffset newLength = m_length - replacedEnd + newEnd;
    if (newEnd != replacedEnd)
        moveTail(replacedEnd, newEnd);
    writeAt(begin, data);
    if (newLength < m_length)
        truncate(newLength);
    seek(newEnd);
}

void CheckedStream::removeBlock(StreamStart start, StreamSize length)
{
    insert(ByteVector(), start, length);
}

void CheckedStream::seek(StreamOffset offset, Position position)
{
    mayGoOn(0);
    const StreamOffset base = position == Beginning ? 0 : position == Current ? m_position : m_length;
    const StreamOffset furthest = std::numeric_limits<StreamOffset>::max() / 2;
    m_position = std::max(StreamOffset(0), base + std::clamp(offset, -furthest, furthest - base));
}

void CheckedStream::truncate(StreamOffset length)
{
    if (!m_file || m_mode == Mode::Read)
        return;
    if (!m_file->truncateTo(length))
        m_failed = true;
    m_buffer.clear();
    m_length = length;
}
