#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the run with what was promised, where that does not hold.
inline void promise(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}
