#pragma once

#include "audiocore/saveproblem.h"
#include "tags/tagfields.h"

#include <string>

namespace audiocore {
/// Saves edits of a file's tag: a complete new file is written beside the old one, flushed, and put in its
/// place, so that whatever happens the file is the old one or the new one, whole. Nothing is written when the
/// edits change nothing. What others write meanwhile is never undone: the save starts over, a few times, with
/// the file as they left it. A picture that is too large for the file is left out, and the rest is saved.
/// What was not saved has a problem, and one log line.
SaveProblem saveEdits(const std::string& path, const TagEdits& edits);
} // namespace audiocore
