#pragma once

#include "audiocore/saveproblem.h"
#include "base/failure.h"
#include "itunes/editproblem.h"

namespace itunes {
/// What came of a change, as its caller may ask.
struct EditResult
{
    iTunesEditProblem problem = ITUNES_EDIT_DONE;
    SaveProblem media = SAVE_NO_PROBLEM; ///< of the media file, when that is the problem
    bool isKept = false;                 ///< an edit, for taking it back
};

/// What a failure of the library file, or of the journal beside it, is to the caller of a change.
iTunesEditProblem problemOf(base::Failure::Kind kind);

/// Of the last change that this thread asked for.
EditResult& lastResult();
} // namespace itunes
