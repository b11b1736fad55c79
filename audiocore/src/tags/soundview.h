#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace audiocore {
class CheckedStream;

/// A music file as decoders get to see it: they would keep the texts of its tags, and search all they have
/// for each further one, so tags look like something to pass over. Places are the file's own, and so is its
/// size, but for what follows the last chunk of a WAV file: decoders search that in steps of eight bytes.
class SoundView
{
public:
    /// Nothing for a file that cannot be looked through; it stays the caller's, the path is for messages
    /// alone. Throws std::bad_alloc alone.
    static std::optional<SoundView> of(std::FILE* file, const std::string& path);
    /// The same of what is open already. Throws EndlessReading, too.
    static std::optional<SoundView> of(CheckedStream& stream);

    /// Reads what is shown from `position` on; the bytes read, fewer only at the end or on failure. Any
    /// thread that has the file for itself.
    std::size_t readAt(std::FILE* file, std::int64_t position, void* bytes, std::size_t count) const;
    /// Makes of bytes that were read from `position` on what is shown of them.
    void showIn(void* bytes, std::int64_t position, std::size_t count) const;
    /// How many bytes are shown of a file that has `size`.
    std::int64_t shownOf(std::int64_t size) const { return size < m_end ? size : m_end; }

    // For the formats, to hide their own tags.

    /// Has these bytes shown there instead of the file's.
    void show(std::int64_t place, std::string_view bytes);
    void endAt(std::int64_t place) { m_end = place; }

private:
    bool hideAll(CheckedStream& stream);
    long hideId3v2(CheckedStream& stream);
    void hideApe(CheckedStream& stream);

    std::map<std::int64_t, char> m_bytes; ///< those that are shown otherwise, by their place
    std::int64_t m_end = std::numeric_limits<std::int64_t>::max(); ///< nothing is shown from here on
};
} // namespace audiocore
