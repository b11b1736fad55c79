#pragma once

#include <functional>

#include <sys/types.h>

/// Steps in front of calls into the system: what the file layer asks for comes here first. Belongs into the
/// test program itself (LIBS interposed, an object), since no library's function would step in front of the
/// system's. What is unset does nothing.
namespace Interposed {
/// Before a file, not a folder, is flushed to the device.
extern std::function<void()> beforeSync;
/// Before a lock is asked for.
extern std::function<void()> beforeLock;
/// Before bytes are read at an offset; true makes the call fail as a broken disk does.
extern std::function<bool(int fd, off_t offset)> readFails;
/// How many bytes copying inside the kernel does; a negative number makes it fail as a broken disk does.
extern std::function<ssize_t(size_t wanted)> copiesInKernel;
/// Before bytes are written at an offset; true makes the call fail as a full disk does.
extern std::function<bool()> writeFails;
/// Before it is asked whether a name may be written; a number other than 0 is the system's reason not to.
extern std::function<int(const char* name)> accessFails;
/// Before a name is removed from an open folder.
extern std::function<void(const char* name)> beforeRemoval;
/// Before something moves to a name that has to be free.
extern std::function<void(const char* name)> beforeMove;
/// Before a file gets a further name; a number other than 0 is the system's reason not to.
extern std::function<int()> linkFails;
/// In place of a pause of microseconds.
extern std::function<void()> pauses;

/// Takes all of them away at the end of a scope.
struct Guard
{
    Guard() = default;
    ~Guard();
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
};
} // namespace Interposed
