#pragma once

#include "cli/console.h"
#include "cli/order.h"

/// The commands about the file of a music library.
namespace LibraryReading {
/// Does what is asked for; the program's exit code.
int run(const Order& order, Console& console);
} // namespace LibraryReading
