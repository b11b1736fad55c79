#include "itunes/delmusiclib.h"

#include "library/musiclibrary.h"

#include <algorithm>
#include <vector>

#ifdef __APPLE__
#include "base/log.h"

#include <cerrno>
#include <exception>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>

extern char** environ;

namespace {
/// False when there is no such program. Waits for the system's answer.
bool startedProgram(const char* bundle)
{
    const char* const arguments[] = {"open", "-g", "-b", bundle, nullptr};
    pid_t child = 0;
    if (posix_spawn(&child, "/usr/bin/open", nullptr, nullptr, const_cast<char* const*>(arguments),
                    environ) != 0)
        return false;
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return true;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Older systems have the music program under its former name.
void startMusicProgram()
{
    try {
        std::thread([] {
            if (!startedProgram("com.apple.Music"))
                startedProgram("com.apple.iTunes");
        }).detach();
    } catch (const std::exception& fault) {
        base::logFailure("the music program", "is not started", fault.what());
    }
}
} // namespace
#else
namespace {
void startMusicProgram() {}
} // namespace
#endif

void launchiTunes()
{
    // What an earlier run left comes before what the program reads or writes.
    itunes::MusicLibrary::instance().prepare();
    startMusicProgram();
}

unsigned char deleteMusic(uint64_t persistentId)
{
    itunes::lastResult() = {itunes::MusicLibrary::instance().remove(persistentId)};
    return itunes::lastResult().problem == ITUNES_EDIT_DONE ? 1 : 0;
}

void deleteTracks(const uint64_t* persistentIds, uint64_t count, iTunesEditProblem* problems)
{
    constexpr uint64_t atOnce = 500; // within the room that a journal has
    for (uint64_t begin = 0; begin < count; begin += atOnce) {
        const uint64_t end = std::min(begin + atOnce, count);
        const std::vector<iTunesEditProblem> answers =
            itunes::MusicLibrary::instance().remove({persistentIds + begin, persistentIds + end});
        std::copy(answers.begin(), answers.end(), problems + begin);
    }
}
