#pragma once

#include "cli/console.h"
#include "cli/order.h"
#include "cli/report.h"

#include <cstdint>

/// The commands that read: scan, undefined, duplicates, show.
namespace Reading {
/// Does what is asked for; the program's exit code.
int run(const Order& order, Console& console);
/// What a run ends with, after its report, where so many things failed. All output is written.
int exitCode(const Order& order, Console& console, const Report& report, std::uint64_t failed);
} // namespace Reading
