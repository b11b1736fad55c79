#pragma once

#include <taglib/taglib.h>

#include <cstddef>

namespace audiocore {
// All that differs between the tag library's versions, as far as we use it: the numbers of its streams.
#if TAGLIB_MAJOR_VERSION >= 2
using StreamOffset = TagLib::offset_t;
using StreamStart = TagLib::offset_t;
using StreamSize = std::size_t;
#else
using StreamOffset = long;
using StreamStart = unsigned long; ///< where something is put in or taken out
using StreamSize = unsigned long;
#endif
} // namespace audiocore
