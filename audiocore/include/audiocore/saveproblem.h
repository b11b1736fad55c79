#pragma once

#include <cstdint>

class IAudioTag;

/// Why a Save did not save, each beside its line in the log. The values stay what they are.
enum SaveProblem : std::int32_t {
    SAVE_NO_PROBLEM = 0, ///< it did, or there was none since Open
    SAVE_FILE_READ_ONLY = 1,
    SAVE_FOLDER_READ_ONLY = 2,
    SAVE_DISK_READ_ONLY = 3,
    SAVE_NO_PERMISSION = 4, ///< others may write, this user may not
    SAVE_DISK_FULL = 5,
    SAVE_CHANGED_MEANWHILE = 6, ///< other programs keep changing the file
    SAVE_FILE_GONE = 7,
    SAVE_NOT_SAFE = 8,          ///< what would be written would not read or play as it should
    SAVE_PICTURE_TOO_LARGE = 9, ///< for the file, which keeps its old picture; everything else was saved
    SAVE_OTHER_PROBLEM = 10     ///< only the log tells
};

/// About the last Save of a tag object that was not closed since. The rules of IAudioTag about threads hold.
SaveProblem SaveProblemOf(const IAudioTag* tag);

/// How many bytes a picture may have for the file of an open tag object, to be saved in it; 0 where no file
/// is open or the file holds no music. The rules of IAudioTag about threads hold.
std::uint32_t LargestPictureFor(const IAudioTag* tag);

/// How many pictures, of whatever kind, the file of an open tag object holds, of which GetItem tells one and
/// a save leaves one at the most; 0 where no file is open. The rules of IAudioTag about threads hold.
std::uint32_t PicturesIn(const IAudioTag* tag);
