#pragma once

#include <cstddef>

/// Lets the process run short of what the system gives. For programs that compile shortage.cpp into
/// themselves, one of each at a time.
namespace Shortage {
/// While it lives, so few threads more than there are may run at once.
class OfThreads
{
public:
    explicit OfThreads(int left = 0);
    ~OfThreads();
    OfThreads(const OfThreads&) = delete;
    OfThreads& operator=(const OfThreads&) = delete;

    /// How many were refused.
    static int refused();
};

enum class Whose { Mine, Others };

/// While it lives, C++ refuses memory to the thread that made it, or to all others.
class OfMemory
{
public:
    /// Refuses so many allocations of at least `bytes` after having granted `granted` of them.
    explicit OfMemory(Whose whose, std::size_t bytes = 1, int granted = 0, int refusals = 1);
    ~OfMemory();
    OfMemory(const OfMemory&) = delete;
    OfMemory& operator=(const OfMemory&) = delete;

    /// How many were refused, and how many were asked for, refused or not.
    static int refused();
    static int asked();
};
} // namespace Shortage
