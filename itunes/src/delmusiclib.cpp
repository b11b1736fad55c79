#include "itunes/delmusiclib.h"

#include "musiclibrary.h"

#ifdef __APPLE__
#include <spawn.h>

extern char** environ;

void launchiTunes()
{
    const char* const arguments[] = {"open", "-g", "-b", "com.apple.Music", nullptr};
    pid_t child = 0;
    posix_spawn(&child, "/usr/bin/open", nullptr, nullptr, const_cast<char* const*>(arguments), environ);
}
#else
void launchiTunes()
{
    itunes::MusicLibrary::instance().prepare();
}
#endif

unsigned char deleteMusic(uint64_t persistentId)
{
    return itunes::MusicLibrary::instance().remove(persistentId) ? 1 : 0;
}
