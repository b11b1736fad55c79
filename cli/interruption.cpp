#include "cli/interruption.h"

#include <csignal>
#include <initializer_list>

namespace {
volatile std::sig_atomic_t come = 0;

extern "C" void note(int)
{
    come = 1;
}
} // namespace

void Interruption::hold()
{
#ifdef _WIN32
    std::signal(SIGINT, note);
#else
    struct sigaction action = {};
    action.sa_handler = note;
    action.sa_flags = int(SA_RESETHAND); // and whoever waits for input waits no longer
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction former = {};
        ::sigaction(signal, nullptr, &former);
        if (former.sa_handler != SIG_IGN) // as nohup has it
            ::sigaction(signal, &action, nullptr);
    }
#endif
}

bool Interruption::hasCome()
{
    return come != 0;
}
