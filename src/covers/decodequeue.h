#pragma once

#include <QImage>

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

/// Runs decodings on threads of its own, in the order in which they were added. The threads start with the
/// first one; where the system makes none, add() decodes. A decoding that throws brings no picture. To be
/// called from one thread.
class DecodeQueue
{
public:
    using Decoding = std::function<QImage()>;

    DecodeQueue() = default;
    /// Waits for the decodings under way; those not begun are dropped.
    ~DecodeQueue();
    Q_DISABLE_COPY(DecodeQueue)

    std::future<QImage> add(Decoding decoding);
    /// Drops the decodings not begun; nothing may wait for them any more.
    void drop();

private:
    using Task = std::packaged_task<QImage()>;

    void work();
    void workOnce();
    void makeThreads();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Task> m_tasks; ///< guarded by m_mutex, as is m_ending
    bool m_ending = false;
    std::vector<std::thread> m_threads;
    bool m_toldShortage = false; ///< of threads
};
