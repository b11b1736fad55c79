#include "itunes/delmusiclib.h"

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
void launchiTunes() {}
#endif
