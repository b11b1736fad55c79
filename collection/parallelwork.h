#pragma once

#include <functional>

/// Pieces of work that have nothing to do with each other, on all processors. Any thread.
namespace ParallelWork {
/// Does the pieces 0 to `count` - 1, begun in that order, on several threads, or on the caller's where there
/// are none to be had. Meanwhile the caller's thread is told now and then how many are done, and at the end;
/// false begins no further one. Returns once all that was begun is done: whether that was all. `work` must
/// not throw.
bool run(int count, const std::function<void(int piece)>& work, const std::function<bool(int done)>& goesOn);
} // namespace ParallelWork
