#include "itunes/itunesmusiclibrary.h"

#include "itunes/librarysearch.h"
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

std::function<iTunesLibraryFound()> iTunesLibrarySearch()
{
    return [places = MusicLibrary::instance().places()] {
        return iTunesLibraryFound{places.file(), places.folders()};
    };
}

void closeITunesLibrary()
{
    MusicLibrary::instance().close();
}
