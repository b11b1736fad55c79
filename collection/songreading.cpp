#include "collection/songreading.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace {
constexpr std::size_t underWay = 256; // a slow file does not hold the others up
} // namespace

unsigned SongReading::ownThreads()
{
    const unsigned processors = std::thread::hardware_concurrency();
    return processors > 1 ? processors : 0;
}

SongReading::SongReading(std::function<void(SongFile&&)> take, unsigned threads)
    : m_take(std::move(take)), m_slots(underWay)
{
    try {
        for (unsigned i = 0; i < threads; ++i)
            m_threads.emplace_back([this] { readWaiting(); });
    } catch (const std::system_error&) {
        return; // those that there are do it
    }
}

SongReading::~SongReading()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_added.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void SongReading::add(const std::string& path)
{
    SongFile song;
    song.path = path;
    append(std::move(song), false);
}

void SongReading::add(SongFile&& known)
{
    append(std::move(known), true);
}

void SongReading::append(SongFile&& song, bool isDone)
{
    while (m_end - m_first == (m_threads.empty() ? 1 : m_slots.size()) || (m_first < m_end && isFirstDone()))
        handOverFirst();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        slotOf(m_end) = {std::move(song), isDone};
        ++m_end;
    }
    m_added.notify_one();
}

void SongReading::finish()
{
    while (m_first < m_end)
        handOverFirst();
}

bool SongReading::isFirstDone()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return slotOf(m_first).isDone;
}

void SongReading::handOverFirst()
{
    SongFile song;
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        Slot& slot = slotOf(m_first);
        if (m_threads.empty()) {
            m_next = m_first + 1;
            if (!slot.isDone)
                slot.song = m_reader.read(slot.song.path);
        } else {
            m_done.wait(lock, [&slot] { return slot.isDone; });
        }
        song = std::move(slot.song);
        ++m_first;
    }
    m_take(std::move(song));
}

/// A thread's work.
void SongReading::readWaiting()
{
    SongFileReader reader;
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_added.wait(lock, [this] { return m_isEnding || m_next < m_end; });
        if (m_isEnding)
            return;
        Slot& slot = slotOf(m_next++);
        if (slot.isDone)
            continue;
        const std::string path = slot.song.path;
        lock.unlock();
        SongFile song = reader.read(path);
        lock.lock();
        slot.song = std::move(song);
        slot.isDone = true;
        m_done.notify_one();
    }
}
