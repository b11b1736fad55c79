#include "itunes/takeback.h"

#include "library/musiclibrary.h"

using itunes::MusicLibrary;

unsigned char takeBackDeletions(const uint64_t* persistentIds, uint64_t count)
{
    const itunes::TrackSet tracks(persistentIds, persistentIds + count);
    itunes::lastResult() = {MusicLibrary::instance().bringBack(tracks)};
    return itunes::lastResult().problem == ITUNES_EDIT_DONE ? 1 : 0;
}

unsigned char takeBackEdit(uint64_t persistentId)
{
    itunes::lastResult() = MusicLibrary::instance().takeBackEdit(persistentId);
    return itunes::lastResult().problem == ITUNES_EDIT_DONE ? 1 : 0;
}

unsigned char canTakeBackEdit()
{
    return itunes::lastResult().isKept ? 1 : 0;
}

uint64_t takeBackBytes()
{
    return MusicLibrary::instance().bytesKept();
}
