#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace audiocore {
class CheckedStream;

/// A music file as decoders get to see it: they would keep the texts of its tags, and search all they have
/// for each further one, so tags look like something to pass over. Sizes and places are the file's own.
class SoundView
{
public:
    /// Nothing for a file that cannot be looked through. Throws std::bad_alloc alone.
    static std::optional<SoundView> of(const std::string& path);

    /// Changes what was read from `position` on into what is shown.
    void show(std::int64_t position, void* bytes, std::size_t count) const;

private:
    bool hideAll(CheckedStream& stream);
    long hideId3v2(CheckedStream& stream);
    void hideApe(CheckedStream& stream);
    void hideFlacBlocks(CheckedStream& stream, long begin);
    void hideChunks(CheckedStream& stream, long begin);
    void hideAsfObjects(CheckedStream& stream, long begin);
    static bool isOggInBounds(CheckedStream& stream, long begin);
    void set(std::int64_t place, const char* bytes, std::size_t count);

    std::map<std::int64_t, char> m_bytes; ///< those that are shown otherwise, by their place
};
} // namespace audiocore
