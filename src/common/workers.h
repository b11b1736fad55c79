#pragma once

#include <exception>

class QThread;

/// What all workers owe: none of their failures is silent, and none ends the program.
namespace Workers {
/// Starts the thread; false when the system makes none, which is in the log then. Nothing comes of it in that
/// case, finished() neither.
bool start(QThread& thread);

/// Makes the threads of the toolkit's own pool now and keeps them. It converts large pictures there and would
/// wait for ever for a thread that the system does not make. After the application object.
void fillToolkitPool();

void logFailure(const char* work, const std::exception& fault) noexcept;

/// Does the work; what it throws ends here, with a line in the log that names the work. False then.
template <typename Work>
bool finish(const char* name, const Work& work) noexcept
{
    try {
        work();
    } catch (const std::exception& fault) {
        logFailure(name, fault);
        return false;
    }
    return true;
}
} // namespace Workers
