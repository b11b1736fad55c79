#include "xml/bytesource.h"

#include "base/platform.h"

#include <algorithm>
#include <string_view>

using itunes::ByteSource;
using itunes::Encoding;

namespace {
constexpr std::size_t rawBlock = 128 * 1024;
constexpr unsigned replacement = 0xFFFD;

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

bool isUtf8(std::string_view name)
{
    constexpr std::string_view utf8 = "utf-8";
    return std::equal(name.begin(), name.end(), utf8.begin(), utf8.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + ('a' - 'A') : a) == b; });
}

bool isHigh(unsigned unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLow(unsigned unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

std::size_t put(char* out, unsigned c)
{
    if (c < 0x80) {
        out[0] = char(c);
        return 1;
    }
    if (c < 0x800) {
        out[0] = char(0xC0 | (c >> 6));
        out[1] = char(0x80 | (c & 0x3F));
        return 2;
    }
    if (c < 0x10000) {
        out[0] = char(0xE0 | (c >> 12));
        out[1] = char(0x80 | ((c >> 6) & 0x3F));
        out[2] = char(0x80 | (c & 0x3F));
        return 3;
    }
    out[0] = char(0xF0 | (c >> 18));
    out[1] = char(0x80 | ((c >> 12) & 0x3F));
    out[2] = char(0x80 | ((c >> 6) & 0x3F));
    out[3] = char(0x80 | (c & 0x3F));
    return 4;
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
    const auto byte = [&text](std::size_t i) { return unsigned(static_cast<unsigned char>(text[i])); };
    const unsigned first = byte(at);
    const std::size_t length = first < 0xC0 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (at + length > text.size() || (length == 1 && first >= 0x80)) {
        ++at;
        return replacement;
    }
    unsigned c = length == 1 ? first : first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i)
        c = (c << 6) | (byte(at + i) & 0x3F);
    at += length;
    return c;
}
} // namespace

ByteSource::ByteSource(std::FILE* file) : m_file(file)
{
    base::FileState state;
    if (base::stateOf(file, state))
        m_size = state.size;
    char bytes[longestDeclaration];
    const std::string_view head(bytes, base::readAt(file, 0, bytes, sizeof bytes));
    const std::string_view declared = declaredEncoding(head);
    m_encoding = encodingOf(head);
    m_declaredOther = m_encoding == Encoding::Utf8 && !declared.empty() && !isUtf8(declared);
}

std::size_t ByteSource::read(char* bytes, std::size_t count)
{
    if (m_encoding != Encoding::Utf8)
        return readUtf16(bytes, count);
    return readBytes(bytes, count);
}

std::size_t ByteSource::readBytes(void* bytes, std::size_t count)
{
    const std::int64_t left = std::max<std::int64_t>(m_size - m_offset, 0);
    const std::size_t wanted = std::size_t(std::min<std::uint64_t>(count, std::uint64_t(left)));
    const std::size_t got = base::readAt(m_file, m_offset, bytes, wanted);
    m_offset += std::int64_t(got);
    return got;
}

void ByteSource::fill()
{
    m_raw.erase(m_raw.begin(), m_raw.begin() + std::ptrdiff_t(m_at));
    m_at = 0;
    const std::size_t left = m_raw.size();
    m_raw.resize(left + rawBlock);
    m_raw.resize(left + readBytes(m_raw.data() + left, rawBlock));
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
    while (done + 4 <= count) {
        if (m_raw.size() - m_at < 4)
            fill();
        if (m_raw.size() - m_at < 2) {
            // Half a unit at the end is no text: what reads it sees that the file is damaged.
            if (m_raw.size() - m_at == 1) {
                m_at = m_raw.size();
                done += put(bytes + done, '<');
            }
            break;
        }
        unsigned c = unitAt(m_at);
        m_at += 2;
        if (isHigh(c) && m_raw.size() - m_at >= 2 && isLow(unitAt(m_at))) {
            c = 0x10000 + ((c - 0xD800) << 10) + (unitAt(m_at) - 0xDC00);
            m_at += 2;
        }
        done += put(bytes + done, c);
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
