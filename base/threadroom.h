#pragma once

namespace base {
/// Whether the system would run so many more threads at once now. For libraries that never return when they
/// cannot make theirs.
bool hasRoomForThreads(int count) noexcept;
} // namespace base
