#pragma once

#include "library/journalrecord.h"

#include <string>

namespace itunes {
enum class Redone {
    Whole,
    WithoutPicture, ///< that is nowhere any more
    Not,            ///< it cannot be done
    NotBegun,       ///< a reversal that came to nothing: everything is as it was before
    NotYet          ///< the library cannot be read at the moment
};

/// Does to the media file what a killed process had begun: whether it was done already or not, it stands
/// there afterwards. What is missing has a reason.
Redone redoEdit(const std::string& libraryPath, const JournalRecord& edit, std::string& reason);
} // namespace itunes
