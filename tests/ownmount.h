#pragma once

#include <functional>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

/// What a process answers, from 0 to 98, that sees a mount which no other process does. Negative where that
/// cannot be had.
inline int withOwnMount(const std::function<bool()>& mount, const std::function<int()>& work)
{
    constexpr int cannot = 99;
    const pid_t child = ::fork();
    if (child == 0) {
        const int more = ::geteuid() == 0 ? 0 : CLONE_NEWUSER;
        const bool mounted = ::unshare(CLONE_NEWNS | more) == 0 &&
                             ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 && mount();
        ::_exit(mounted ? work() : cannot);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) < cannot ? WEXITSTATUS(status) : -1;
}
