#pragma once

#include "cli/order.h"

#include <optional>

/// What the program is told to do.
namespace CommandLine {
constexpr int wrongCall = 2;

/// The order; none when the answer is given already, be it help, the version, or on standard error what part
/// of the call is wrong: then `exitCode` is the program's.
std::optional<Order> read(int argc, char* argv[], int& exitCode);
} // namespace CommandLine
