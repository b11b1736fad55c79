#pragma once

// Precompiled, it comes before every test's own code.
#include "sanitized.h"

#include <QtTest>

#include <chrono>
#include <filesystem>
#include <thread>

/// How long a test waits for what comes as soon as the machine has time for it, in milliseconds. Only what
/// never comes takes so long: a test on a busy machine is slow, not red.
constexpr int patience = 300000;

#undef QTRY_VERIFY
#define QTRY_VERIFY(expression) QTRY_VERIFY_WITH_TIMEOUT((expression), patience)
#undef QTRY_COMPARE
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT((actual), (expected), patience)

/// The toolkit says that a thread has ended while the system's one still clears up, and the check for leaks
/// at the end of the process, which looks into all threads, fails where one of them goes: it waits for the
/// last.
struct ThreadsAreGone
{
    ~ThreadsAreGone()
    {
        const std::filesystem::path threads("/proc/self/task");
        std::error_code error;
        for (int i = 0; sanitized && i < 2000; ++i) {
            const std::filesystem::directory_iterator all(threads, error);
            if (std::distance(begin(all), end(all)) <= 1)
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
};
inline const ThreadsAreGone threadsAreGone;
