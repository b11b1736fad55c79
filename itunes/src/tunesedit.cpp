#include "itunes/tunesedit.h"

#include "location.h"
#include "musiclibrary.h"

#include <cstring>

using itunes::MusicLibrary;

namespace {
constexpr std::size_t largeBuffer = 1024;
} // namespace

int get_trackWithPresistentID(EyeTunes* application, uint64_t persistentId, char* output1, char* output2,
                              char* output3, char* output4, void* null, char* fifth, char* last)
{
    (void)application;
    (void)output1;
    (void)output2;
    (void)output3;
    (void)output4;
    (void)null;
    if (fifth && *fifth)
        return 1;
    const std::optional<std::string> location = MusicLibrary::instance().locationOf(persistentId);
    if (!location)
        return 1;
    const std::string_view fitting = itunes::cutLocation(*location, largeBuffer - 1);
    std::memcpy(last, fitting.data(), fitting.size());
    last[fitting.size()] = 0;
    return 0;
}

int set_trackWithPresistentID(EyeTunes*, uint64_t, const char*, const char*, const char*, const char*, int32_t,
                              const char*)
{
    return 1; // edits follow with the journal
}
