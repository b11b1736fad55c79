#include "endingsignals.h"

#ifdef Q_OS_UNIX
#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {
// Both live as long as the process: a signal may come at any moment.
std::array<int, 2> wakeUp = {-1, -1}; ///< a pipe from the handler to the event loop
std::atomic<int> firstSignal{0};

/// Runs between any two instructions of any thread.
void note(int signal)
{
    const int error = errno;
    int none = 0;
    firstSignal.compare_exchange_strong(none, signal);
    // A full pipe wakes the event loop as well.
    [[maybe_unused]] const ssize_t written = ::write(wakeUp[1], "", 1);
    errno = error;
}

bool makePipe()
{
    if (::pipe(wakeUp.data()) != 0)
        return false;
    for (const int end : wakeUp) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::fcntl(end, F_SETFL, O_NONBLOCK);
    }
    return true;
}

void holdUnlessIgnored(int signal)
{
    struct sigaction former = {};
    if (::sigaction(signal, nullptr, &former) != 0 || former.sa_handler == SIG_IGN)
        return;
    struct sigaction held = {};
    held.sa_handler = note;
    held.sa_flags = SA_RESTART;
    sigemptyset(&held.sa_mask);
    ::sigaction(signal, &held, nullptr);
}
} // namespace

void EndingSignals::hold()
{
    if (!makePipe()) {
        qWarning("signals end the program at once: there is no pipe for them");
        return;
    }
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        holdUnlessIgnored(signal);
}

int EndingSignals::passOn(int exitCode)
{
    const int signal = firstSignal;
    if (signal == 0)
        return exitCode;
    std::fflush(nullptr); // as a return from main would
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    return 128 + signal; // the first process of a container does not die by its own signals
}

EndingSignals::EndingSignals(QObject* parent) : QObject(parent)
{
    if (wakeUp[0] < 0)
        return;
    auto* notifier = new QSocketNotifier(wakeUp[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &EndingSignals::takeIn);
}

void EndingSignals::takeIn()
{
    std::array<char, 64> bytes = {};
    while (::read(wakeUp[0], bytes.data(), bytes.size()) > 0) {
    }
    emit arrived();
}
#else
void EndingSignals::hold() {}

int EndingSignals::passOn(int exitCode)
{
    return exitCode;
}

EndingSignals::EndingSignals(QObject* parent) : QObject(parent) {}

void EndingSignals::takeIn() {}
#endif
