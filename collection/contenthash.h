#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/// Tells whether bytes that are handed over piece by piece are equal to others, of as many. Numbers that
/// nobody can know are drawn for each run: whatever the bytes, and whoever made them up, two different rows
/// of some gigabytes have one hash with a chance of less than 1 in 2^60. No use beyond the run. One thread
/// at a time, several objects at once.
class ContentHash
{
public:
    /// Of this run.
    struct Secret
    {
        std::array<std::uint64_t, 2> points;
        static Secret drawn();
    };

    explicit ContentHash(const Secret& secret) : m_secret(secret) {}

    void add(const char* bytes, std::size_t count);
    /// 32 characters; nothing can be added afterwards.
    std::string result();

private:
    static constexpr std::size_t wordSize = 7; ///< bytes, so that each is smaller than the prime

    void addWord(const char* bytes, std::size_t count);

    Secret m_secret;
    std::array<std::uint64_t, 2> m_sums{1, 1};
    std::array<char, wordSize> m_rest{};
    std::size_t m_restSize = 0;
    std::uint64_t m_count = 0;
};
