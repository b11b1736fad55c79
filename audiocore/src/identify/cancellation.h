#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace audiocore {
/// Tells the thread that works, from any other, to stop.
class Cancellation
{
public:
    using Clock = std::chrono::steady_clock;

    Cancellation() = default;
    /// Is cancelled with the other, which outlives it and through which alone it is, and when the time has
    /// come.
    Cancellation(const Cancellation& with, Clock::time_point end) : m_with(&with), m_end(end) {}

    /// Is cancelled with the flag, which outlives it and wakes nobody who sleeps, or by cancel().
    explicit Cancellation(const std::atomic<bool>& flag) : m_flag(&flag) {}

    void cancel();
    void clear();
    bool isCancelled() const;
    /// Whether only the time cancelled it.
    bool hasExpired() const;
    /// Sleeps until the time has come, or until cancelled; false when cancelled.
    bool sleepUntil(Clock::time_point time) const;

private:
    const Cancellation* const m_with = nullptr;
    const std::atomic<bool>* const m_flag = nullptr;
    const Clock::time_point m_end;
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    bool m_cancelled = false;
};
} // namespace audiocore
