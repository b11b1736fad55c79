#pragma once

#include <cstdint>
#include <limits>

/// Arithmetic on numbers that come from files: what does not fit is the nearest number that does.
namespace base::checked {
constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();

constexpr std::int64_t sum(std::int64_t a, std::int64_t b)
{
    if (b > 0 && a > most - b)
        return most;
    return b < 0 && a < least - b ? least : a + b;
}

/// `factor` is a number of our own, not below zero.
constexpr std::int64_t product(std::int64_t number, std::int64_t factor)
{
    if (factor == 0)
        return 0;
    if (number > most / factor)
        return most;
    return number < least / factor ? least : number * factor;
}

/// number * factor / divisor, for a factor and a divisor that are above zero and below 2^31; 0 for a divisor
/// that is not above zero.
constexpr std::int64_t scaled(std::int64_t number, std::int64_t factor, std::int64_t divisor)
{
    if (divisor <= 0)
        return 0;
    return sum(product(number / divisor, factor), product(number % divisor, factor) / divisor);
}
} // namespace base::checked
