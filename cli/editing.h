#pragma once

#include "cli/console.h"
#include "cli/order.h"

/// The commands that write: tag, cover.
namespace Editing {
/// Changes the tags of files; the program's exit code.
int tag(const Order& order, Console& console);
/// Writes a song's cover into a file of its own; the program's exit code.
int saveCover(const Order& order, Console& console);
} // namespace Editing
