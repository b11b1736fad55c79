#include "media/wavchunks.h"

#include "media/checkedstream.h"

#include <algorithm>
#include <limits>

using audiocore::StreamOffset;
using audiocore::WavChunk;
using audiocore::WavChunks;
using TagLib::ByteVector;

namespace {
constexpr std::int64_t riffHead = 12;
constexpr unsigned int nameSize = 4;
constexpr std::int64_t unknownSize = 0xFFFFFFFF;
constexpr std::int64_t none = std::numeric_limits<std::int64_t>::max(); ///< more than any file has

/// Of a head.
bool isName(const ByteVector& head)
{
    return std::all_of(head.begin(), head.begin() + nameSize, [](char c) { return c >= ' ' && c <= '~'; });
}
} // namespace

WavChunks::WavChunks(CheckedStream& stream, std::int64_t begin)
    : m_stream(stream), m_isLong(stream.readAt(StreamOffset(begin), 4) != "RIFF"), m_end(begin + riffHead)
{
    while (m_all.size() < most) {
        std::optional<WavChunk> chunk = chunkAt(m_end);
        if (!chunk)
            break;
        if (!m_sound && chunk->name == "data") {
            m_sound = m_all.size();
            measureSound(*chunk);
        }
        m_all.push_back(*chunk);
        if (!chunk->isWhole)
            break;
        m_end = chunk->end;
    }
}

const WavChunk* WavChunks::find(std::initializer_list<const char*> names) const
{
    const auto chunk = std::find_if(m_all.begin(), m_all.end(), [names](const WavChunk& one) {
        return one.isWhole &&
               std::any_of(names.begin(), names.end(), [&one](const char* name) { return one.name == name; });
    });
    return chunk == m_all.end() ? nullptr : &*chunk;
}

std::optional<WavChunk> WavChunks::chunkAt(std::int64_t position)
{
    std::optional<WavChunk> chunk = headAt(position);
    if (chunk)
        chunk->end = endOf(*chunk);
    return chunk;
}

std::optional<WavChunk> WavChunks::headAt(std::int64_t position)
{
    const ByteVector head = m_stream.readAt(StreamOffset(position), StreamSize(WavChunk::headSize));
    if (std::int64_t(head.size()) < WavChunk::headSize || !isName(head))
        return std::nullopt;
    WavChunk chunk;
    chunk.name = head.mid(0, nameSize);
    chunk.begin = position + WavChunk::headSize;
    const std::int64_t told = head.toUInt(nameSize, false);
    chunk.size = std::min(told, std::int64_t(m_stream.length()) - chunk.begin);
    chunk.isWhole = chunk.size == told;
    return chunk;
}

/// Some programs forget to fill up what is odd, others do not do it with a zero.
std::int64_t WavChunks::endOf(const WavChunk& chunk)
{
    const std::int64_t end = chunk.begin + chunk.size;
    const ByteVector filling = chunk.size % 2 == 0 ? ByteVector() : m_stream.readAt(StreamOffset(end), 1);
    if (filling.isEmpty())
        return end;
    const std::optional<WavChunk> next = filling.data()[0] == '\0' ? std::nullopt : headAt(end + 1);
    return filling.data()[0] == '\0' || (next && next->isWhole) ? end + 1 : end;
}

void WavChunks::measureSound(WavChunk& sound)
{
    const std::int64_t left = std::int64_t(m_stream.length()) - sound.begin;
    const bool isTold = sound.isWhole && sound.size != unknownSize;
    std::int64_t size = isTold ? sound.size : none;
    if (m_isLong && !isTold)
        size = longSoundSize();
    m_soundHasSize = size > 0 && size <= left;
    const bool isStillToCome = isTold && size == 0 && onlyChunksFollow(sound.begin);
    sound.size = m_soundHasSize ? size : isStillToCome ? 0 : left;
    sound.isWhole = true;
    sound.end = endOf(sound);
}

bool WavChunks::onlyChunksFollow(std::int64_t position)
{
    for (std::size_t chunks = 0; chunks < most && position < m_stream.length(); ++chunks) {
        const std::optional<WavChunk> chunk = chunkAt(position);
        if (!chunk || !chunk->isWhole)
            return false;
        position = chunk->end;
    }
    return position == m_stream.length();
}

/// From the chunk in front of all others that has the sizes for which four bytes are too few.
std::int64_t WavChunks::longSoundSize()
{
    constexpr unsigned int place = 8; // behind the size of the file
    constexpr std::int64_t needed = 2 * 8;
    const WavChunk* const sizes = find({"ds64"});
    if (!sizes || sizes->size < needed)
        return none;
    const std::int64_t size =
        m_stream.readAt(StreamOffset(sizes->begin), StreamSize(needed)).toLongLong(place, false);
    return size > 0 ? size : none;
}
