#pragma once

#include "cli/console.h"
#include "cli/order.h"

/// The commands about what was changed: undo, history.
namespace TakingBack {
/// Takes a step back; the program's exit code.
int undo(const Order& order, Console& console);
/// Lists the steps; the program's exit code.
int history(const Order& order, Console& console);
} // namespace TakingBack
