#include "covers/decodequeue.h"

#include "common/workers.h"

#include <algorithm>
#include <utility>

namespace {
/// One processor is left for whoever reads the files; more than a few would only wait for the disk.
unsigned threadCount()
{
    return std::clamp(std::thread::hardware_concurrency(), 2u, 5u) - 1;
}
} // namespace

DecodeQueue::~DecodeQueue()
{
    drop();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

std::future<QImage> DecodeQueue::add(Decoding decoding)
{
    Task task([decoding = std::move(decoding)] {
        QImage image;
        Workers::finish("decoding a cover", [&] { image = decoding(); });
        return image;
    });
    std::future<QImage> image = task.get_future();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }
    m_changed.notify_one();
    makeThreads();
    if (m_threads.empty())
        workOnce();
    return image;
}

/// Fewer than wanted will do, and another call may find room for more.
void DecodeQueue::makeThreads()
{
    try {
        while (m_threads.size() < threadCount())
            m_threads.emplace_back([this] { work(); });
    } catch (const std::exception& fault) {
        if (m_threads.empty() && !std::exchange(m_toldShortage, true))
            Workers::logFailure("making a thread for covers", fault);
    }
}

void DecodeQueue::drop()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_tasks.clear();
}

void DecodeQueue::work()
{
    for (;;) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_ending || !m_tasks.empty(); });
        if (m_tasks.empty())
            return;
        lock.unlock();
        workOnce();
    }
}

void DecodeQueue::workOnce()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_tasks.empty())
        return;
    Task task = std::move(m_tasks.front());
    m_tasks.pop_front();
    lock.unlock();
    task();
}
