#include "collection/parallelwork.h"

#include "collection/songreading.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace {
constexpr std::chrono::milliseconds betweenTellings(50);

class Pieces
{
public:
    Pieces(int count, const std::function<void(int)>& work) : m_count(count), m_work(work) {}

    /// Does what nobody has begun, one piece after the other, until there is none left.
    void doThem()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (m_next < m_count && !m_isEnded) {
            const int piece = m_next++;
            lock.unlock();
            m_work(piece);
            lock.lock();
            ++m_done;
            m_changed.notify_one();
        }
    }
    /// Until it has told that all are done, or it is ended.
    void watch(const std::function<bool(int)>& goesOn)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        int told = 0;
        while (told < m_count && !m_isEnded) {
            if (m_done < m_count)
                m_changed.wait_for(lock, betweenTellings);
            told = m_done;
            lock.unlock();
            const bool isToGoOn = goesOn(told);
            lock.lock();
            m_isEnded = !isToGoOn;
        }
    }
    bool areDone()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_done == m_count;
    }

private:
    const int m_count;
    const std::function<void(int)>& m_work;
    std::mutex m_mutex; ///< held for all below
    std::condition_variable m_changed;
    int m_next = 0;
    int m_done = 0;
    bool m_isEnded = false;
};

std::vector<std::thread> threadsFor(Pieces& pieces, unsigned most)
{
    std::vector<std::thread> threads;
    try {
        for (unsigned i = 0; i < most; ++i)
            threads.emplace_back([&pieces] { pieces.doThem(); });
    } catch (const std::system_error&) {
        return threads; // those that there are do it
    }
    return threads;
}
} // namespace

bool ParallelWork::run(int count, const std::function<void(int piece)>& work,
                       const std::function<bool(int done)>& goesOn)
{
    Pieces pieces(count, work);
    std::vector<std::thread> threads =
        threadsFor(pieces, std::min(SongReading::ownThreads(), unsigned(std::max(count, 0))));
    if (threads.empty()) {
        for (int piece = 0; piece < count; ++piece) {
            work(piece);
            if (!goesOn(piece + 1))
                return piece + 1 == count;
        }
        return true;
    }
    pieces.watch(goesOn);
    for (std::thread& thread : threads)
        thread.join();
    return pieces.areDone();
}
