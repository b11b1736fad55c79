#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <ctime>
#include <limits>
#include <vector>

/// How long something took, over and over, in milliseconds. A busy machine may put off any single
/// run, so a test bounds what nearly all of them took; the benchmarks tell the figures.
class Latencies
{
public:
    void add(qint64 milliseconds) { m_all.push_back(milliseconds); }
    qint64 longest() const { return *std::max_element(m_all.begin(), m_all.end()); }
    /// What 95 of 100 took at most.
    qint64 usual() const
    {
        std::vector<qint64> sorted = m_all;
        std::sort(sorted.begin(), sorted.end());
        return sorted.at((sorted.size() * 95 + 99) / 100 - 1);
    }

private:
    std::vector<qint64> m_all;
};

/// The processor's milliseconds that one call takes in this process, however busy the machine is.
template <class Call>
qint64 processorMillisecondsOf(Call call)
{
    const std::clock_t before = std::clock();
    call();
    return qint64(std::clock() - before) * 1000 / CLOCKS_PER_SEC;
}

/// The shortest of three runs: what the code itself needs.
/// @param run does it once, and returns the milliseconds it took.
template <class Run>
qint64 shortestOfThree(Run run)
{
    qint64 shortest = std::numeric_limits<qint64>::max();
    for (int i = 0; i < 3; ++i)
        shortest = std::min(shortest, run());
    return shortest;
}

/// The milliseconds that one call takes.
template <class Call>
qint64 millisecondsOf(Call call)
{
    QElapsedTimer clock;
    clock.start();
    call();
    return clock.elapsed();
}
