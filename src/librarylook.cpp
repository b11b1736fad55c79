#include "librarylook.h"

#include "common/workers.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace {
constexpr char lookWork[] = "looking for the music library";
constexpr std::chrono::milliseconds longestFarewell(100);
} // namespace

/// Where the thread leaves what it found.
struct LibraryLook::Answer
{
    std::mutex mutex;
    LibraryLook* receiver = nullptr; ///< null once nobody waits for it
    std::condition_variable given;
    bool isGiven = false;
    LibrarySight sight;
};

LibraryLook::LibraryLook() = default;

LibraryLook::~LibraryLook()
{
    if (!m_awaited)
        return;
    std::unique_lock<std::mutex> lock(m_awaited->mutex);
    m_awaited->receiver = nullptr;
    // Most threads have ended by then, and do not run on while the program goes.
    m_awaited->given.wait_for(lock, longestFarewell, [this] { return m_awaited->isGiven; });
}

bool LibraryLook::isRunning() const
{
    return m_awaited != nullptr;
}

void LibraryLook::begin()
{
    if (m_awaited) {
        const std::lock_guard<std::mutex> lock(m_awaited->mutex);
        m_awaited->receiver = nullptr;
    }
    m_awaited = std::make_shared<Answer>();
    m_awaited->receiver = this;
    const auto look = [answer = m_awaited, search = LibrarySight::search()] {
        LibrarySight sight;
        Workers::finish(lookWork, [&] { sight = search(); });
        const std::lock_guard<std::mutex> lock(answer->mutex);
        answer->sight = std::move(sight);
        answer->isGiven = true;
        if (answer->receiver)
            QMetaObject::invokeMethod(answer->receiver, "take", Qt::QueuedConnection);
        answer->given.notify_all();
    };
    if (!Workers::finish(lookWork, [&] { std::thread(look).detach(); }))
        look();
}

void LibraryLook::take()
{
    if (!m_awaited)
        return;
    std::unique_lock<std::mutex> lock(m_awaited->mutex);
    if (!m_awaited->isGiven)
        return;
    const LibrarySight sight = m_awaited->sight;
    lock.unlock();
    m_awaited.reset();
    emit ended(sight);
}
