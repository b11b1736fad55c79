#include "xml/bytesource.h"

#include "base/filebytes.h"
#include "base/text.h"

#include <algorithm>
#include <string_view>

using itunes::ByteSource;
using itunes::Encoding;

namespace {
constexpr std::size_t rawBlock = 128 * 1024;

constexpr std::size_t longestDeclaration = 256;

Encoding encodingOf(std::string_view head)
{
    if (head.size() < 2)
        return Encoding::Utf8;
    const auto first = static_cast<unsigned char>(head[0]);
    const auto second = static_cast<unsigned char>(head[1]);
    if ((first == 0xFF && second == 0xFE) || (first == '<' && second == 0))
        return Encoding::Utf16Little;
    if ((first == 0xFE && second == 0xFF) || (first == 0 && second == '<'))
        return Encoding::Utf16Big;
    return Encoding::Utf8;
}

/// The encoding that an XML declaration names; empty for none.
std::string_view declaredEncoding(std::string_view head)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    constexpr std::string_view word = "encoding";
    if (head.substr(0, mark.size()) == mark)
        head.remove_prefix(mark.size());
    if (head.substr(0, 5) != "<?xml")
        return {};
    head = head.substr(0, head.find("?>"));
    const std::size_t at = head.find(word);
    const std::size_t quote = at == std::string_view::npos ? at : head.find_first_of("\"'", at + word.size());
    if (quote == std::string_view::npos)
        return {};
    head.remove_prefix(quote + 1);
    return head.substr(0, head.find_first_of("\"'"));
}

/// Whether the name of an encoding is that of UTF-8.
bool namesUtf8(std::string_view name)
{
    constexpr std::string_view utf8 = "utf-8";
    return std::equal(name.begin(), name.end(), utf8.begin(), utf8.end(),
                      [](char a, char b) { return base::smallAscii(a) == b; });
}

bool isHigh(unsigned unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLow(unsigned unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

void putUnit(std::string& out, unsigned unit, Encoding encoding)
{
    const char low = char(unit & 0xFF);
    const char high = char(unit >> 8);
    out += encoding == Encoding::Utf16Little ? low : high;
    out += encoding == Encoding::Utf16Little ? high : low;
}

/// The character at `at`, surrogate halves included, and moves on.
unsigned characterAt(const std::string& text, std::size_t& at)
{
    const base::Utf8Number read = base::utf8At(text, at);
    at += read.size > 0 ? read.size : 1;
    return read.size > 0 ? read.number : base::replacementCharacter;
}
} // namespace

ByteSource::ByteSource(const base::FileBytes& file) : m_file(file), m_size(file.size().value_or(0))
{
    char bytes[longestDeclaration];
    const std::string_view head(bytes, readAt(0, bytes, sizeof bytes));
    const std::string_view declared = declaredEncoding(head);
    m_encoding = encodingOf(head);
    m_declaredOther = m_encoding == Encoding::Utf8 && !declared.empty() && !namesUtf8(declared);
}

std::size_t ByteSource::roomForAll(std::size_t most) const
{
    return std::size_t(std::min<std::uint64_t>(most, std::uint64_t(m_size) + leastRoom));
}

std::size_t ByteSource::read(char* bytes, std::size_t count)
{
    if (m_encoding != Encoding::Utf8)
        return readUtf16(bytes, count);
    return readBytes(bytes, count);
}

std::size_t ByteSource::readBytes(void* bytes, std::size_t count)
{
    const std::size_t got = readAt(m_offset, bytes, count);
    m_offset += std::int64_t(got);
    return got;
}

std::size_t ByteSource::readAt(std::int64_t offset, void* bytes, std::size_t count)
{
    const std::int64_t left = std::max<std::int64_t>(m_size - offset, 0);
    const std::size_t wanted = std::size_t(std::min<std::uint64_t>(count, std::uint64_t(left)));
    const std::size_t got = m_file.readAt(offset, bytes, wanted);
    m_failed = m_failed || got < wanted;
    return got;
}

void ByteSource::fill()
{
    m_raw.erase(m_raw.begin(), m_raw.begin() + std::ptrdiff_t(m_at));
    m_at = 0;
    const std::size_t left = m_raw.size();
    const std::size_t block = roomForAll(rawBlock);
    m_raw.resize(left + block);
    m_raw.resize(left + readBytes(m_raw.data() + left, block));
}

unsigned ByteSource::unitAt(std::size_t index) const
{
    const unsigned first = m_raw[index];
    const unsigned second = m_raw[index + 1];
    return m_encoding == Encoding::Utf16Little ? first | second << 8 : first << 8 | second;
}

std::size_t ByteSource::readUtf16(char* bytes, std::size_t count)
{
    std::size_t done = 0;
    while (done + base::longestUtf8 <= count) {
        if (m_raw.size() - m_at < 4)
            fill();
        if (m_raw.size() - m_at < 2) {
            // Half a unit at the end is no text: what reads it sees that the file is damaged.
            if (m_raw.size() - m_at == 1) {
                m_at = m_raw.size();
                done += base::putUtf8(bytes + done, '<');
            }
            break;
        }
        unsigned c = unitAt(m_at);
        m_at += 2;
        if (isHigh(c) && m_raw.size() - m_at >= 2 && isLow(unitAt(m_at))) {
            c = 0x10000 + ((c - 0xD800) << 10) + (unitAt(m_at) - 0xDC00);
            m_at += 2;
        }
        done += base::putUtf8(bytes + done, c);
    }
    return done;
}

std::string itunes::encoded(const std::string& text, Encoding encoding)
{
    if (encoding == Encoding::Utf8)
        return text;
    std::string out;
    out.reserve(text.size() * 2);
    for (std::size_t at = 0; at < text.size();) {
        const unsigned c = characterAt(text, at);
        if (c >= 0x10000) {
            putUnit(out, 0xD800 + ((c - 0x10000) >> 10), encoding);
            putUnit(out, 0xDC00 + ((c - 0x10000) & 0x3FF), encoding);
        } else {
            putUnit(out, c, encoding);
        }
    }
    return out;
}

std::string itunes::inReferences(const std::string& text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const unsigned c = characterAt(text, at);
        if (c < 0x80)
            out += char(c);
        else
            out += "&#" + std::to_string(c) + ';';
    }
    return out;
}
