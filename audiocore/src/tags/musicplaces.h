#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace audiocore {
/// The parts of a file that are its music, in the order in which they are found.
class MusicPlaces
{
public:
    struct Part
    {
        std::int64_t begin;
        std::int64_t size;
    };
    /// A file of more is not taken apart.
    static constexpr std::size_t most = std::size_t(1) << 20;

    /// Of a file of so many bytes; nothing goes further.
    explicit MusicPlaces(std::int64_t length) : m_length(length) {}

    /// None that begins at its end or behind it.
    void add(std::int64_t begin, std::int64_t end)
    {
        end = std::min(end, m_length);
        if (begin < 0 || begin >= end)
            return;
        m_bytes += end - begin;
        if (!m_parts.empty() && m_parts.back().begin + m_parts.back().size == begin)
            m_parts.back().size += end - begin;
        else if (m_parts.size() < most)
            m_parts.push_back({begin, end - begin});
        else
            m_areTooMany = true;
    }
    bool areTooMany() const { return m_areTooMany; }
    /// Of all parts.
    std::int64_t bytes() const { return m_bytes; }
    const std::vector<Part>& parts() const { return m_parts; }

private:
    std::int64_t m_length;
    std::vector<Part> m_parts;
    std::int64_t m_bytes = 0;
    bool m_areTooMany = false;
};
} // namespace audiocore
