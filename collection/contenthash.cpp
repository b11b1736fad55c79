#include "collection/contenthash.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {
// The bytes are the coefficients of a polynomial over the numbers below this prime, and the hash is what it
// is at two points: different polynomials of a degree agree at no more points than that.
constexpr std::uint64_t prime = (std::uint64_t(1) << 61) - 1;

std::uint64_t reduced(std::uint64_t number)
{
    const std::uint64_t sum = (number & prime) + (number >> 61);
    return sum >= prime ? sum - prime : sum;
}

/// Of two numbers below the prime, by halves of 31 bits, which every machine can multiply.
std::uint64_t product(std::uint64_t a, std::uint64_t b)
{
    constexpr std::uint64_t low31 = (std::uint64_t(1) << 31) - 1;
    constexpr std::uint64_t low30 = (std::uint64_t(1) << 30) - 1;
    const std::uint64_t middle = (a & low31) * (b >> 31) + (a >> 31) * (b & low31);
    return reduced((a >> 31) * (b >> 31) * 2 + (middle >> 30) + ((middle & low30) << 31) +
                   (a & low31) * (b & low31));
}
} // namespace

ContentHash::Secret ContentHash::Secret::drawn()
{
    Secret secret{};
    for (std::uint64_t& point : secret.points)
        point = QRandomGenerator::system()->generate64() % prime;
    return secret;
}

void ContentHash::add(const char* bytes, std::size_t count)
{
    m_count += count;
    if (m_restSize > 0) {
        const std::size_t taken = std::min(count, wordSize - m_restSize);
        std::memcpy(m_rest.data() + m_restSize, bytes, taken);
        m_restSize += taken;
        bytes += taken;
        count -= taken;
        if (m_restSize < wordSize)
            return;
        addWord(m_rest.data(), wordSize);
        m_restSize = 0;
    }
    for (; count >= wordSize; bytes += wordSize, count -= wordSize)
        addWord(bytes, wordSize);
    std::memcpy(m_rest.data(), bytes, count);
    m_restSize = count;
}

void ContentHash::addWord(const char* bytes, std::size_t count)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, count);
    word = reduced(word); // where the lower bytes are the last ones it is larger
    for (std::size_t i = 0; i < m_sums.size(); ++i)
        m_sums[i] = reduced(product(m_sums[i], m_secret.points[i]) + word);
}

std::string ContentHash::result()
{
    addWord(m_rest.data(), m_restSize);
    addWord(reinterpret_cast<const char*>(&m_count), wordSize); // what a word was filled up with is no byte
    std::array<char, 33> text{};
    std::snprintf(text.data(), text.size(), "%016llx%016llx", static_cast<unsigned long long>(m_sums[0]),
                  static_cast<unsigned long long>(m_sums[1]));
    return text.data();
}
