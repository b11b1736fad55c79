#pragma once

#include <stdint.h>

/// Why a change of the library was not made, each beside its line in the log. The values stay what they are.
enum iTunesEditProblem : int32_t {
    ITUNES_EDIT_DONE = 0,          ///< it was made, or none was asked for yet
    ITUNES_TRACK_GONE = 1,         ///< the track is no longer in the library
    ITUNES_TRACK_AMBIGUOUS = 2,    ///< several tracks have its identifier
    ITUNES_TRACK_WITHOUT_FILE = 3, ///< on this machine
    ITUNES_PICTURE_UNREADABLE = 4,
    ITUNES_MEDIA_NOT_SAVED = 5, ///< the track's media file; iTunesMediaProblem() tells why
    ITUNES_LIBRARY_IN_USE = 6,  ///< another program is changing it
    ITUNES_LIBRARY_BROKEN = 7,
    ITUNES_LIBRARY_READ_ONLY = 8, ///< the file
    ITUNES_LIBRARY_FOLDER_READ_ONLY = 9,
    ITUNES_LIBRARY_DISK_READ_ONLY = 10,
    ITUNES_LIBRARY_NO_PERMISSION = 11, ///< others may write, this user may not
    ITUNES_LIBRARY_DISK_FULL = 12,
    ITUNES_LIBRARY_GONE = 13,
    ITUNES_LIBRARY_OTHER_PROBLEM = 14, ///< only the log tells
    ITUNES_CHANGED_SINCE = 15,         ///< by another program, after what was to be taken back
    ITUNES_NOT_KEPT = 16               ///< what was to be taken back is not known any more
};

/// About the last call of set_trackWithPresistentID, deleteMusic, takeBackEdit or takeBackDeletions on this
/// thread.
iTunesEditProblem iTunesLastEditProblem();
/// The audio core's reason (SaveProblem) of an ITUNES_MEDIA_NOT_SAVED; 0 otherwise.
int32_t iTunesMediaProblem();
