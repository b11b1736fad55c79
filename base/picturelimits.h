#pragma once

#include <cstdint>

namespace base {
/// A picture of more pixels counts as none, be it of the skin, of a song or from a service; told before its
/// pixels are read.
constexpr std::int64_t mostPixels = 64ll * 1024 * 1024;
} // namespace base
