#pragma once

#include "tags/tagfields.h"

#include <string>

namespace base {
class FileBytes;
}

/// Editing the tags of a file, wherever its bytes lie. Names, copies, locks and whose place a file takes are
/// the matter of `saveEdits` alone.
namespace audiocore {
struct ParsedMedia;

struct NeededEdits
{
    TagEdits edits;
    std::string leftOut; ///< why the picture is not among them
};

/// The edits that a file needs and can take that was read as `media`.
NeededEdits neededEdits(const ParsedMedia& media, const TagEdits& edits);

/// Edits the copy of a file that was read as `original`, and hands it to its device. True when the copy then
/// reads as the edits want it and plays as the original does; otherwise false with a reason, and it may be
/// half written. The path is for messages alone. Throws EndlessReading.
bool editCopy(base::FileBytes& copy, const std::string& path, const TagEdits& edits,
              const ParsedMedia& original, std::string& error);
} // namespace audiocore
