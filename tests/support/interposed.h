#pragma once

#include <functional>
#include <mutex>

#include <sys/types.h>

/// Steps in front of calls into the system: what the file layer asks for comes here first. Belongs into the
/// test program itself (LIBS interposed, an object), since no library's function would step in front of the
/// system's. What is unset does nothing.
namespace Interposed {
template <typename Signature>
class Step;

/// What a test does in front of a call. It may be set while other threads call.
template <typename Result, typename... Arguments>
class Step<Result(Arguments...)>
{
public:
    using Function = std::function<Result(Arguments...)>;

    Step& operator=(Function function)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_function.swap(function);
        return *this;
    }
    /// What is set now, or nothing.
    Function get() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_function;
    }

private:
    mutable std::mutex m_mutex;
    Function m_function;
};

/// Before a file, not a folder, is flushed to the device.
extern Step<void()> beforeSync;
/// Before a lock is asked for.
extern Step<void()> beforeLock;
/// Before bytes are read at an offset; true makes the call fail as a broken disk does.
extern Step<bool(int fd, off_t offset)> readFails;
/// How many bytes copying inside the kernel does; a negative number makes it fail as a broken disk does.
extern Step<ssize_t(size_t wanted)> copiesInKernel;
/// Before bytes are written at an offset; true makes the call fail as a full disk does.
extern Step<bool()> writeFails;
/// Before it is asked whether a name may be written; a number other than 0 is the system's reason not to.
extern Step<int(const char* name)> accessFails;
/// Before a file is made in an open folder; a number other than 0 is the system's reason not to.
extern Step<int()> makingFails;
/// Before a name is removed from an open folder.
extern Step<void(const char* name)> beforeRemoval;
/// Before something moves to a name that has to be free.
extern Step<void(const char* name)> beforeMove;
/// Before a file gets a further name; a number other than 0 is the system's reason not to.
extern Step<int()> linkFails;
/// In place of a pause of microseconds.
extern Step<void()> pauses;

/// Takes all of them away at the end of a scope.
struct Guard
{
    Guard() = default;
    ~Guard();
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
};
} // namespace Interposed
