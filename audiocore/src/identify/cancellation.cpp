#include "identify/cancellation.h"

using audiocore::Cancellation;

void Cancellation::cancel()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_cancelled = true;
    }
    m_changed.notify_all();
}

void Cancellation::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_cancelled = false;
}

bool Cancellation::isCancelled() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_cancelled;
}

bool Cancellation::sleepUntil(Clock::time_point time) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_changed.wait_until(lock, time, [this] { return m_cancelled; });
}
