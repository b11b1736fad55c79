#include "library/delayedwork.h"

#include "base/log.h"

#include <exception>
#include <utility>

using itunes::DelayedWork;

DelayedWork::DelayedWork(std::function<void()> work, std::chrono::milliseconds pause)
    : m_work(std::move(work)), m_pause(pause)
{
}

DelayedWork::~DelayedWork()
{
    stop();
}

void DelayedWork::ask()
{
    askAfter(m_pause);
}

void DelayedWork::askAtOnce()
{
    askAfter(std::chrono::milliseconds::zero());
}

void DelayedWork::askAfter(std::chrono::milliseconds pause)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_due = Clock::now() + pause;
    if (!m_thread.joinable())
        startThread();
    m_changed.notify_one();
}

void DelayedWork::startThread()
{
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::exception& fault) {
        if (!std::exchange(m_toldShortage, true))
            base::logFailure("the music library", "changes wait, no thread can be made to write them",
                             fault.what());
    }
}

void DelayedWork::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
        m_changed.notify_one();
    }
    if (m_thread.joinable())
        m_thread.join();
    m_thread = std::thread();
    m_ending = false;
    m_due = Clock::time_point::max();
}

void DelayedWork::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_ending) {
        if (m_due == Clock::time_point::max()) {
            m_changed.wait(lock);
        } else if (Clock::now() < m_due) {
            m_changed.wait_until(lock, m_due);
        } else {
            m_due = Clock::time_point::max();
            lock.unlock();
            m_work();
            lock.lock();
        }
    }
}
