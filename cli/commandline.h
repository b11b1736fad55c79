#pragma once

#include "cli/order.h"

#include <functional>
#include <optional>

namespace CLI {
class App;
}

/// What the program is told to do.
namespace CommandLine {
constexpr int wrongCall = 2;

/// The order; none when the answer is given already, be it help, the version, or on standard error what part
/// of the call is wrong: then `exitCode` is the program's.
std::optional<Order> read(int argc, char* argv[], int& exitCode);
/// Shows all commands and options that there are, as they are read.
void tell(const std::function<void(const CLI::App&)>& listener);
} // namespace CommandLine
