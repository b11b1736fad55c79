#include "collection/historyline.h"

#include "base/hash.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace {
constexpr std::size_t sumDigits = 16;
constexpr char textMark = '='; // so that an empty one is seen, too

std::string sumOf(std::string_view content)
{
    static const char digits[] = "0123456789abcdef";
    std::uint64_t hash = base::hashOf(content);
    std::string sum(sumDigits, '0');
    for (auto digit = sum.rbegin(); digit != sum.rend(); ++digit, hash >>= 4)
        *digit = digits[hash & 15];
    return sum;
}

/// What would end a text or a line.
bool isSpecial(unsigned char byte)
{
    return byte <= ' ' || byte == '%' || byte == 0x7F;
}

int digitOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}
} // namespace

HistoryLine& HistoryLine::number(std::int64_t number)
{
    m_content += ' ' + std::to_string(number);
    return *this;
}

HistoryLine& HistoryLine::text(const std::string& text)
{
    static const char digits[] = "0123456789ABCDEF";
    m_content += {' ', textMark};
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isSpecial(byte))
            m_content.append({'%', digits[byte >> 4], digits[byte & 15]});
        else
            m_content += c;
    }
    return *this;
}

std::string HistoryLine::whole() const
{
    return sumOf(m_content) + ' ' + m_content + '\n';
}

HistoryLine::Reader::Reader(std::string_view line)
{
    if (line.size() <= sumDigits || line[sumDigits] != ' ')
        return;
    m_rest = line.substr(sumDigits + 1);
    m_good = line.substr(0, sumDigits) == sumOf(m_rest);
    m_what = next();
}

std::string_view HistoryLine::Reader::next()
{
    const std::size_t end = std::min(m_rest.find(' '), m_rest.size());
    const std::string_view part = m_rest.substr(0, end);
    m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
    return part;
}

std::int64_t HistoryLine::Reader::number()
{
    const std::string_view part = next();
    std::int64_t number = 0;
    const auto read = std::from_chars(part.data(), part.data() + part.size(), number);
    m_good = m_good && read.ec == std::errc() && read.ptr == part.data() + part.size() && !part.empty();
    return number;
}

std::string HistoryLine::Reader::text()
{
    const std::string_view part = next();
    m_good = m_good && !part.empty() && part.front() == textMark;
    std::string text;
    for (std::size_t i = 1; m_good && i < part.size(); ++i) {
        if (part[i] != '%') {
            text += part[i];
            continue;
        }
        const int high = i + 2 < part.size() ? digitOf(part[i + 1]) : -1;
        const int low = i + 2 < part.size() ? digitOf(part[i + 2]) : -1;
        m_good = high >= 0 && low >= 0;
        text += char(high * 16 + low);
        i += 2;
    }
    return text;
}
