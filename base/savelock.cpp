#include "base/savelock.h"

#include "base/platform.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <functional>
#include <thread>

using base::SaveLock;

namespace {
constexpr int tries = 200;
constexpr std::chrono::milliseconds betweenTries(5);

/// A few for all files: it does no harm when two of them wait for each other.
std::mutex& mutexOf(const std::string& target)
{
    static auto* mutexes = new std::array<std::mutex, 64>; // kept to the end of the process
    return (*mutexes)[std::hash<std::string>()(target) % mutexes->size()];
}

bool isAtItsPath(std::FILE* file, const std::string& path)
{
    base::FileState own;
    base::FileState there;
    return base::stateOf(file, own) && base::stateOf(path, there) && own.isOf(there);
}
} // namespace

SaveLock::SaveLock(const std::string& target) : m_inProcess(mutexOf(target))
{
#ifndef _WIN32 // where nothing could take the place of an open file
    for (int i = 0; i < tries; ++i) {
        m_file.reset(base::openFile(target, false));
        if (!m_file)
            return;
        const bool locked = base::lockFile(m_file.get());
        const bool isHeld = !locked && errno == EWOULDBLOCK; // else there are no locks here
        if (locked ? isAtItsPath(m_file.get(), target) : !isHeld)
            return;
        if (isHeld) // else its former holder has put another file there
            std::this_thread::sleep_for(betweenTries);
    }
#endif
}
