#include "base/threadroom.h"

#include <exception>
#include <future>
#include <thread>
#include <vector>

bool base::hasRoomForThreads(int count) noexcept
{
    std::vector<std::thread> threads;
    bool room = true;
    try {
        std::promise<void> allThere;
        const std::shared_future<void> end = allThere.get_future().share();
        threads.reserve(std::size_t(count));
        for (int i = 0; i < count; ++i)
            threads.emplace_back([end] { end.wait(); });
        allThere.set_value();
    } catch (const std::exception&) {
        room = false; // the promise, broken, ends those that are there
    }
    for (std::thread& thread : threads)
        thread.join();
    return room;
}
