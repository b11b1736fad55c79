#pragma once

#include <taglib/tbytevector.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

namespace audiocore {
class CheckedStream;

/// A part of a WAV file, as a place in it.
struct WavChunk
{
    static constexpr std::int64_t headSize = 8;

    TagLib::ByteVector name;
    std::int64_t begin = 0; ///< of its bytes, behind name and size
    std::int64_t size = 0;  ///< as far as the file goes
    std::int64_t end = 0;   ///< with the byte that fills it up to an even number
    bool isWhole = true;    ///< whether the file goes as far as it says

    std::int64_t headBegin() const { return begin - headSize; }
};

/// What a WAV file consists of, by a walk of our own, which asks nothing of the size that the file says to
/// have. TagLib's was tried: it takes no file whose sound has no size or one that is too large, as programs
/// leave it that write into a pipe or were cut short, and it writes over what lies behind the last chunk.
class WavChunks
{
public:
    /// What goes beyond so many is not looked at.
    static constexpr std::size_t most = 1000;

    WavChunks(CheckedStream& stream, std::int64_t begin);

    const std::vector<WavChunk>& all() const { return m_all; }
    /// The first whole one with one of these names; null without one.
    const WavChunk* find(std::initializer_list<const char*> names) const;
    /// Null without a chunk for it. Where the file tells no size that it has, it goes on to the file's end;
    /// where nothing but chunks follow a size of zero, there is none yet.
    const WavChunk* sound() const { return m_sound ? &m_all[*m_sound] : nullptr; }
    /// Whether the size that the file tells is the one that it has.
    bool soundHasSize() const { return m_soundHasSize; }
    /// Whether it may be larger than 4 GB: RF64 and BW64.
    bool isLong() const { return m_isLong; }
    /// Where the chunks end that are whole.
    std::int64_t end() const { return m_end; }

private:
    std::optional<WavChunk> chunkAt(std::int64_t position);
    /// Without its end.
    std::optional<WavChunk> headAt(std::int64_t position);
    std::int64_t endOf(const WavChunk& chunk);
    void measureSound(WavChunk& sound);
    bool onlyChunksFollow(std::int64_t position);
    std::int64_t longSoundSize();

    CheckedStream& m_stream;
    std::vector<WavChunk> m_all;
    std::optional<std::size_t> m_sound;
    bool m_soundHasSize = false;
    bool m_isLong = false;
    std::int64_t m_end = 0;
};
} // namespace audiocore
