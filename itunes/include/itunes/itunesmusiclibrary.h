#pragma once

#include "itunes/itunestrackrecord.h"

/// Reads the library anew. Sets `*records` to the first of `*count` records, in the library's order, or to
/// null when there are none: no library file was found, it is empty, or it is broken, which one log line
/// tells with line and column. The array and its texts belong to the library and stay valid until the next
/// call; the memory of the array before goes only when that next call begins. The caller may set fields of
/// the records. Any thread.
void GetMusicInfo(iTunesTrackRecord** records, int* count);

/// Why the last reading gave nothing though there is a library file, with line and column where it is broken;
/// empty otherwise. UTF-8 for people, valid until the next call of GetMusicInfo. Any thread.
const char* iTunesLibraryProblem();

/// How a reading went.
enum iTunesReading : int32_t {
    ITUNES_READ = 0,       ///< there are tracks, or nothing was read yet
    ITUNES_NO_LIBRARY = 1, ///< no library file was found
    ITUNES_EMPTY = 2,      ///< it holds no track
    ITUNES_BROKEN = 3,
    ITUNES_UNREADABLE = 4 ///< it cannot be opened, or not be read to its end
};
/// Of the last call of GetMusicInfo. Any thread.
iTunesReading iTunesLastReading();
/// The line of the file where it is broken; 0 unless the last reading found it so. Any thread.
uint64_t iTunesBrokenLine();

/// Names the library file to use, UTF-8; null or empty: the one that the environment variable
/// MELODRIFT_ITUNES_LIBRARY names, else the first of the usual ones. Holds from the next reading on; what is
/// pending for another file is written first.
void setITunesLibraryOption(const char* path);

/// Writes what is pending and ends all work in the background. For the program's end, whether or not the
/// library was used; calls after it begin anew.
void closeITunesLibrary();
