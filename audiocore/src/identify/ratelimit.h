#pragma once

#include "identify/cancellation.h"

namespace audiocore {
/// Spaces the requests to one service, whichever threads they come from.
class RateLimit
{
public:
    using Clock = Cancellation::Clock;

    /// The least time from one request's start to the next one's.
    explicit RateLimit(Clock::duration interval) : m_interval(interval) {}

    /// Waits until the next request may start and counts it as started; false, and nothing counted, when
    /// cancelled.
    bool waitForTurn(const Cancellation& cancellation);
    /// Lets no request start before this time is over, because the service asked for it.
    void holdFor(Clock::duration time);

private:
    /// Takes the turn when it has come; when not, tells when to ask again.
    bool takeTurn(Clock::time_point& next);

    const Clock::duration m_interval;
    std::mutex m_mutex;
    Clock::time_point m_next;
};
} // namespace audiocore
