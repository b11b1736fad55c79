#include "itunes/tunesedit.h"

#include "library/localtext.h"
#include "library/location.h"
#include "library/musiclibrary.h"

#include <algorithm>
#include <cstring>

using itunes::MusicLibrary;

namespace {
constexpr std::size_t smallBuffer = 256;
constexpr std::size_t largeBuffer = 1024;

bool writeArtwork(uint64_t persistentId, const char* buffer)
{
    const bool ends = std::memchr(buffer, 0, smallBuffer) != nullptr;
    return ends && MusicLibrary::instance().writeArtwork(persistentId, buffer);
}

bool tellLocation(uint64_t persistentId, char* buffer)
{
    const std::optional<std::string> location = MusicLibrary::instance().locationOf(persistentId);
    if (!location || !buffer)
        return false;
    const std::string_view fitting = itunes::cutLocation(*location, largeBuffer - 1);
    std::memcpy(buffer, fitting.data(), fitting.size());
    buffer[fitting.size()] = 0;
    return true;
}
} // namespace

int set_trackWithPresistentID(EyeTunes* application, uint64_t persistentId, const char* name,
                              const char* album, const char* artist, const char* genre, int32_t year,
                              const char* coverPath)
{
    (void)application;
    const itunes::TrackValues values{itunes::cleanText(name), itunes::cleanText(artist),
                                     itunes::cleanText(album), itunes::cleanLocalText(genre),
                                     std::max<int32_t>(year, 0)};
    itunes::lastResult() = MusicLibrary::instance().edit(persistentId, values, itunes::localPath(coverPath));
    return itunes::lastResult().problem == ITUNES_EDIT_DONE ? 0 : 1;
}

int get_trackWithPresistentID(EyeTunes* application, uint64_t persistentId, char* output1, char* output2,
                              char* output3, char* output4, void* null, char* fifth, char* last)
{
    (void)application;
    (void)output1;
    (void)output2;
    (void)output3;
    (void)output4;
    (void)null;
    const bool wantsArtwork = fifth && *fifth;
    return (wantsArtwork ? writeArtwork(persistentId, fifth) : tellLocation(persistentId, last)) ? 0 : 1;
}
