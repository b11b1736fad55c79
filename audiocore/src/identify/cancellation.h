#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace audiocore {
/// Tells the thread that works, from any other, to stop.
class Cancellation
{
public:
    using Clock = std::chrono::steady_clock;

    void cancel();
    void clear();
    bool isCancelled() const;
    /// Sleeps until the time has come, or until cancelled; false when cancelled.
    bool sleepUntil(Clock::time_point time) const;

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    bool m_cancelled = false;
};
} // namespace audiocore
