#include "itunes/itunesmusiclibrary.h"

#include "library/musiclibrary.h"

using itunes::MusicLibrary;

void GetMusicInfo(iTunesTrackRecord** records, int* count)
{
    MusicLibrary::instance().read(records, count);
}

const char* iTunesLibraryProblem()
{
    return MusicLibrary::instance().problem();
}

iTunesReading iTunesLastReading()
{
    return MusicLibrary::instance().lastReading().result;
}

uint64_t iTunesBrokenLine()
{
    return MusicLibrary::instance().lastReading().line;
}

void setITunesLibraryOption(const char* path)
{
    MusicLibrary::instance().setOption(path ? path : "");
}

void closeITunesLibrary()
{
    MusicLibrary::instance().close();
}
