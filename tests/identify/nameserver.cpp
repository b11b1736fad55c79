#include "nameserver.h"

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <dlfcn.h>
#include <mutex>
#include <netdb.h>

namespace {
struct Gate
{
    std::mutex mutex;
    std::condition_variable changed;
    int questions = 0;
    bool released = false;
};

Gate& gate()
{
    static auto* gate = new Gate; // for threads that ask to the end of the process
    return *gate;
}

void waitAtGate()
{
    std::unique_lock<std::mutex> lock(gate().mutex);
    ++gate().questions;
    gate().changed.notify_all();
    gate().changed.wait(lock, [] { return gate().released; });
}

void setReleased(bool released)
{
    {
        const std::lock_guard<std::mutex> lock(gate().mutex);
        gate().released = released;
    }
    gate().changed.notify_all();
}
} // namespace

bool NameServer::waitForQuestions(int count)
{
    std::unique_lock<std::mutex> lock(gate().mutex);
    return gate().changed.wait_for(lock, std::chrono::seconds(120),
                                   [count] { return gate().questions >= count; });
}

void NameServer::release()
{
    setReleased(true);
}

void NameServer::hold()
{
    setReleased(false);
}

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result)
{
    if (node && std::strncmp(node, "slow.", 5) == 0) {
        waitAtGate();
        return EAI_NONAME;
    }
    using Function = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
    static const auto system = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return system(node, service, hints, result);
}
