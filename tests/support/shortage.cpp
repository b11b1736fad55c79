#include "shortage.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <limits>
#include <new>
#include <pthread.h>

namespace {
constexpr int noThreadShortage = std::numeric_limits<int>::max();
std::atomic<int> mostThreads{noThreadShortage};
std::atomic<int> threads{0}; ///< made here and not over
std::atomic<int> threadsRefused{0};

constexpr std::size_t noShortage = std::numeric_limits<std::size_t>::max();
std::atomic<std::size_t> shortFrom{noShortage}; ///< bytes
std::atomic<int> memoryGranted{0};
std::atomic<int> memoryRefusals{0};
std::atomic<int> memoryRefused{0};
std::atomic<int> memoryAsked{0};
std::atomic<pthread_t> maker{};
std::atomic<bool> concernsMaker{false};

bool refuses(std::size_t bytes)
{
    if (bytes < shortFrom || (pthread_equal(maker, pthread_self()) != 0) != concernsMaker ||
        ++memoryAsked <= memoryGranted || memoryRefused >= memoryRefusals)
        return false;
    ++memoryRefused;
    return true;
}

struct Task
{
    void* (*start)(void*);
    void* argument;
};

/// Counts itself out however it ends.
struct CountedThread
{
    CountedThread() = default;
    ~CountedThread() { --threads; }
    CountedThread(const CountedThread&) = delete;
    CountedThread& operator=(const CountedThread&) = delete;
};

void* runCounted(void* memory)
{
    const CountedThread counted;
    const Task task = *static_cast<Task*>(memory);
    std::free(memory);
    return task.start(task.argument);
}
} // namespace

Shortage::OfThreads::OfThreads(int left)
{
    threadsRefused = 0;
    mostThreads = threads + left;
}

Shortage::OfThreads::~OfThreads()
{
    mostThreads = noThreadShortage;
}

int Shortage::OfThreads::refused()
{
    return threadsRefused;
}

Shortage::OfMemory::OfMemory(Whose whose, std::size_t bytes, int granted, int refusals)
{
    maker = pthread_self();
    concernsMaker = whose == Whose::Mine;
    memoryGranted = granted;
    memoryRefusals = refusals;
    memoryRefused = 0;
    memoryAsked = 0;
    shortFrom = bytes;
}

Shortage::OfMemory::~OfMemory()
{
    shortFrom = noShortage;
}

int Shortage::OfMemory::refused()
{
    return memoryRefused;
}

int Shortage::OfMemory::asked()
{
    return memoryAsked;
}

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument)
{
    if (++threads > mostThreads) {
        --threads;
        ++threadsRefused;
        return EAGAIN;
    }
    using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto system = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
    auto* task = static_cast<Task*>(std::malloc(sizeof(Task)));
    *task = {start, argument};
    const int failure = system(thread, attributes, runCounted, task);
    if (failure != 0) {
        --threads;
        std::free(task);
    }
    return failure;
}

void* operator new(std::size_t bytes)
{
    void* memory = refuses(bytes) ? nullptr : std::malloc(bytes > 0 ? bytes : 1);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void* operator new[](std::size_t bytes)
{
    return ::operator new(bytes);
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return refuses(bytes) ? nullptr : std::malloc(bytes > 0 ? bytes : 1);
}

void* operator new[](std::size_t bytes, const std::nothrow_t& nothrow) noexcept
{
    return ::operator new(bytes, nothrow);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}
