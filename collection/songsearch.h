#pragma once

#include <string>

/// Who hears of a search among songs that looks into their files, on the thread that searches.
class SongSearchListener
{
public:
    virtual ~SongSearchListener() = default;
    /// A song that cannot be compared, in the order of the songs.
    virtual void failed(int song, const std::string& reason) = 0;
    /// No song can be.
    virtual void cannotSearch(const std::string& reason) = 0;
    /// So many of so many files were looked into, from none on for each kind of look. False ends the search.
    virtual bool goesOn(int done, int of) = 0;

protected:
    SongSearchListener() = default;
    SongSearchListener(const SongSearchListener&) = default;
    SongSearchListener& operator=(const SongSearchListener&) = default;
};
