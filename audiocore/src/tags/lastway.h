#pragma once

#include "tags/tagkind.h"

#include <memory>

namespace audiocore {
struct FormatRow;

/// What nobody else makes anything of, read by libavformat: with the row's one demuxer, behind the same
/// bounds as all reading, and never written. The module that does it is loaded for the first such file. Null
/// where there is no sound, or no module. The stream must outlive it.
std::unique_ptr<TaggedFile> openLastWay(CheckedStream& stream, const FormatRow& row);
} // namespace audiocore
