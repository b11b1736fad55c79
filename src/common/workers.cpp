#include "common/workers.h"

#include <QSemaphore>
#include <QtDebug>
#include <QThread>
#include <QThreadPool>

#include <cstdio>
#include <memory>

bool Workers::start(QThread& thread)
{
    thread.start();
    // One that has ended meanwhile is finished. Asked in this order: it may end in between.
    return thread.isRunning() || thread.isFinished();
}

void Workers::fillToolkitPool()
{
    constexpr int enough = 4; // further pictures wait for one of these
    constexpr int longestMilliseconds = 3000;
    QThreadPool& pool = *QThreadPool::globalInstance();
    const int wanted = qMin(pool.maxThreadCount(), enough);
    // Shared: a task that found no thread may be run much later.
    const auto started = std::make_shared<QSemaphore>();
    const auto over = std::make_shared<QSemaphore>();
    pool.setExpiryTimeout(-1);
    int made = 0;
    do
        pool.start([started, over] {
            started->release();
            over->acquire();
        });
    while (started->tryAcquire(1, longestMilliseconds) && ++made < wanted);
    pool.setMaxThreadCount(qMax(made, 1));
    over->release(wanted);
}

void Workers::logFailure(const char* work, const std::exception& fault) noexcept
{
    try {
        qWarning("%s failed: %s", work, fault.what());
    } catch (const std::exception&) {
        std::fprintf(stderr, "%s failed: %s\n", work, fault.what()); // needs no memory
    }
}
