#pragma once

#include <taglib/tbytevector.h>

#include <cstdint>

namespace audiocore {
/// Reads bytes bit by bit, the highest first. Behind their end there are zeros.
class Mp4Bits
{
public:
    explicit Mp4Bits(const TagLib::ByteVector& bytes, unsigned int fromByte = 0)
        : m_bytes(bytes), m_position(std::int64_t(fromByte) * 8)
    {
    }

    std::uint32_t read(int count)
    {
        std::uint32_t value = 0;
        for (; count > 0; --count, ++m_position)
            value = value << 1 | bitAt(m_position);
        return value;
    }
    void skip(std::int64_t count) { m_position += count; }
    std::int64_t position() const { return m_position; }
    std::int64_t left() const { return std::int64_t(m_bytes.size()) * 8 - m_position; }

private:
    std::uint32_t bitAt(std::int64_t position) const
    {
        if (position >= std::int64_t(m_bytes.size()) * 8)
            return 0;
        return std::uint32_t(m_bytes.data()[position / 8]) >> (7 - position % 8) & 1;
    }

    TagLib::ByteVector m_bytes; // shared, not copied
    std::int64_t m_position;
};
} // namespace audiocore
