#pragma once

#include <cstdint>
#include <string_view>

namespace base {
/// FNV-1a: tells damaged from whole and different from probably equal, nothing more. `hash` is that of the
/// bytes before, where there are any.
inline std::uint64_t hashOf(std::string_view bytes, std::uint64_t hash = 0xcbf29ce484222325u)
{
    for (const char c : bytes)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
    return hash;
}
} // namespace base
