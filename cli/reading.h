#pragma once

#include "cli/console.h"
#include "cli/order.h"

/// The commands that read: scan, undefined, duplicates, show.
namespace Reading {
/// Does what is asked for; the program's exit code.
int run(const Order& order, Console& console);
} // namespace Reading
