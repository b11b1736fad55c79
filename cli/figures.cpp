#include "cli/figures.h"

#include "collection/counttext.h"

#include <array>
#include <cstdio>

namespace {
std::string formatted(const char* format, double number, const char* unit)
{
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), format, number, unit);
    return text.data();
}
} // namespace

std::string Figures::size(std::uint64_t bytes)
{
    if (bytes < 1000)
        return count(bytes, "byte", "bytes");
    static constexpr std::array<const char*, 4> units = {"kB", "MB", "GB", "TB"};
    double number = double(bytes) / 1000;
    std::size_t unit = 0;
    for (; number >= 999.95 && unit + 1 < units.size(); ++unit)
        number /= 1000;
    return formatted("%.1f %s", number, units[unit]);
}

std::string Figures::length(std::uint64_t milliseconds)
{
    const auto seconds = static_cast<unsigned long long>(milliseconds / 1000);
    std::array<char, 48> text{};
    if (seconds < 3600)
        std::snprintf(text.data(), text.size(), "%llu:%02llu", seconds / 60, seconds % 60);
    else
        std::snprintf(text.data(), text.size(), "%llu:%02llu:%02llu", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    return text.data();
}

std::string Figures::sampleRate(std::uint64_t hertz)
{
    return formatted("%.4g %s", double(hertz) / 1000, "kHz");
}

std::string Figures::bitRate(std::uint64_t bitsPerSecond)
{
    return count((bitsPerSecond + 500) / 1000) + " kbit/s";
}

std::string Figures::count(std::uint64_t number)
{
    return CountText::number(number).toStdString();
}

std::string Figures::count(std::uint64_t number, const char* one, const char* many)
{
    return CountText::of(number, one, many).toStdString();
}
