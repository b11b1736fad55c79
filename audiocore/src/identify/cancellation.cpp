#include "identify/cancellation.h"

#include <algorithm>

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
    if (m_with)
        return m_with->isCancelled() || Clock::now() >= m_end;
    if (m_flag && *m_flag)
        return true;
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_cancelled;
}

bool Cancellation::hasExpired() const
{
    return m_with && !m_with->isCancelled() && Clock::now() >= m_end;
}

bool Cancellation::sleepUntil(Clock::time_point time) const
{
    if (m_with)
        return m_with->sleepUntil(std::min(time, m_end)) && !isCancelled();
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_changed.wait_until(lock, time, [this] { return m_cancelled; });
}
