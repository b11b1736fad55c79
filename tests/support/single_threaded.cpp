// Stands before the system's call in tests that say they start no thread, which the thread sanitizer does not
// run: one that does ends where it starts it.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <pthread.h>

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument)
{
    static std::atomic<int> threads{0};
    if (++threads > 1) { // the first is Qt Test's own, which ends tests that hang
        std::fputs("This test is single_threaded, says its CMakeLists.txt, and starts a thread.\n", stderr);
        std::abort();
    }
    using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto system = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
    return system(thread, attributes, start, argument);
}
