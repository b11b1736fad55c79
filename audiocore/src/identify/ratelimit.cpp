#include "identify/ratelimit.h"

#include <algorithm>

using audiocore::RateLimit;

bool RateLimit::takeTurn(Clock::time_point& next)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Clock::time_point now = Clock::now();
    next = m_next;
    if (now < m_next)
        return false;
    m_next = now + m_interval;
    return true;
}

bool RateLimit::waitForTurn(const Cancellation& cancellation)
{
    Clock::time_point next;
    while (!cancellation.isCancelled()) {
        if (takeTurn(next))
            return true;
        cancellation.sleepUntil(next);
    }
    return false;
}

void RateLimit::holdFor(Clock::duration time)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_next = std::max(m_next, Clock::now() + time);
}
