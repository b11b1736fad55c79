#include "identify/ratelimit.h"

#include <QtTest>

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

using audiocore::Cancellation;
using audiocore::RateLimit;
using namespace std::chrono_literals;

class TestRateLimit : public QObject
{
    Q_OBJECT

private slots:
    void theFirstTurnIsAtOnce();
    void turnsOfSeveralThreadsKeepTheInterval();
    void aCancelledWaitTakesNoTurn();
    void aHoldLetsNobodyStart();
    void aShorterHoldDoesNotEndALongerOne();
};

void TestRateLimit::theFirstTurnIsAtOnce()
{
    RateLimit limit(1h);
    const Cancellation never;
    const auto before = RateLimit::Clock::now();
    QVERIFY(limit.waitForTurn(never));
    QVERIFY(RateLimit::Clock::now() - before < 1min);
}

void TestRateLimit::turnsOfSeveralThreadsKeepTheInterval()
{
    RateLimit limit(20ms);
    std::mutex mutex;
    std::vector<RateLimit::Clock::time_point> turns;
    const auto take = [&] {
        const Cancellation never;
        for (int i = 0; i < 5; ++i) {
            limit.waitForTurn(never);
            const std::lock_guard<std::mutex> lock(mutex);
            turns.push_back(RateLimit::Clock::now());
        }
    };
    const auto before = RateLimit::Clock::now();
    std::thread one(take);
    std::thread other(take);
    one.join();
    other.join();
    QCOMPARE(turns.size(), size_t(10));
    // One by one they may be seen late, but never can there have been more of them than intervals.
    std::sort(turns.begin(), turns.end());
    for (size_t i = 0; i < turns.size(); ++i)
        QVERIFY(turns[i] - before >= 20ms * int(i));
}

void TestRateLimit::aCancelledWaitTakesNoTurn()
{
    RateLimit limit(200ms);
    const Cancellation never;
    const auto before = RateLimit::Clock::now();
    QVERIFY(limit.waitForTurn(never));
    for (int i = 0; i < 100; ++i) {
        Cancellation cancelled;
        cancelled.cancel();
        QVERIFY(!limit.waitForTurn(cancelled));
    }
    QVERIFY(limit.waitForTurn(never));
    QVERIFY(RateLimit::Clock::now() - before < 19s); // a hundred turns would take twenty
}

void TestRateLimit::aHoldLetsNobodyStart()
{
    RateLimit limit(0ms);
    const Cancellation never;
    limit.holdFor(100ms);
    const auto before = RateLimit::Clock::now();
    QVERIFY(limit.waitForTurn(never));
    QVERIFY(RateLimit::Clock::now() - before > 90ms);
}

void TestRateLimit::aShorterHoldDoesNotEndALongerOne()
{
    RateLimit limit(0ms);
    const Cancellation never;
    const auto before = RateLimit::Clock::now();
    limit.holdFor(100ms);
    limit.holdFor(1ms);
    QVERIFY(limit.waitForTurn(never));
    QVERIFY(RateLimit::Clock::now() - before >= 100ms);
}

QTEST_GUILESS_MAIN(TestRateLimit)
#include "tst_ratelimit.moc"
