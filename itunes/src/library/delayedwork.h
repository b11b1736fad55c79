#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace itunes {
/// Does a piece of work in the background once the reasons for it have paused. The thread lives from the
/// first reason to stop(). The work must not throw.
class DelayedWork
{
public:
    DelayedWork(std::function<void()> work, std::chrono::milliseconds pause);
    ~DelayedWork();
    DelayedWork(const DelayedWork&) = delete;
    DelayedWork& operator=(const DelayedWork&) = delete;

    /// There is a reason to work; each call begins the pause anew. Where the system makes no thread, that is
    /// logged, and the work waits for a later call that finds one.
    void ask();
    /// The same without any pause.
    void askAtOnce();
    /// The same with another pause.
    void askAfter(std::chrono::milliseconds pause);
    /// Waits for work that goes on and ends the thread; what was only asked for is not done.
    void stop();

private:
    using Clock = std::chrono::steady_clock;

    void startThread();
    void run();

    const std::function<void()> m_work;
    const std::chrono::milliseconds m_pause;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread m_thread;
    Clock::time_point m_due = Clock::time_point::max();
    bool m_ending = false;
    bool m_toldShortage = false; ///< of threads
};
} // namespace itunes
