#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace base {
class FileBytes;
}

namespace itunes {
enum class Encoding { Utf8, Utf16Little, Utf16Big };

/// A file's text as UTF-8, from the first byte to the last, byte-order mark included. Surrogate halves of
/// UTF-16 that stand alone become the three bytes that UTF-8 would have for them, so that nothing is lost on
/// the way back.
class ByteSource
{
public:
    /// The file stays the caller's, and must live as long.
    explicit ByteSource(const base::FileBytes& file);

    Encoding encoding() const { return m_encoding; }
    /// Whether the file says to be in another encoding: then only ASCII may be put into it.
    bool isDeclaredOther() const { return m_declaredOther; }
    static constexpr std::size_t leastRoom = 8;
    /// Room for reading the whole file at once, were it of ASCII; `most` for a larger one.
    std::size_t roomForAll(std::size_t most) const;
    /// The bytes read; 0 at the end, never for want of room: `count` is at least leastRoom. The end is where
    /// it was in the beginning: what another program adds meanwhile is not read.
    std::size_t read(char* bytes, std::size_t count);
    /// Whether bytes that the file had could not be read: what looks like the end is none.
    bool failed() const { return m_failed; }

private:
    std::size_t readUtf16(char* bytes, std::size_t count);
    unsigned unitAt(std::size_t index) const;
    void fill();
    std::size_t readBytes(void* bytes, std::size_t count);
    std::size_t readAt(std::int64_t offset, void* bytes, std::size_t count);

    const base::FileBytes& m_file;
    Encoding m_encoding = Encoding::Utf8;
    bool m_declaredOther = false;
    bool m_failed = false;
    std::int64_t m_offset = 0;
    std::int64_t m_size = 0;
    std::vector<unsigned char> m_raw; ///< UTF-16 that waits
    std::size_t m_at = 0;
};

/// UTF-8 as ByteSource gives it, in the encoding that it came from.
std::string encoded(const std::string& text, Encoding encoding);
/// The same characters in ASCII: numeric references in place of all others.
std::string inReferences(const std::string& text);
} // namespace itunes
