#pragma once

#include "cli/order.h"

#include <functional>
#include <string>

/// The paths of an order: those of the command line, then those of its list.
namespace PathList {
/// Hands them over one by one, as they come; `take` returns false to end it. What is wrong with the list, or
/// empty.
std::string read(const Order& order, const std::function<bool(const std::string& path)>& take);
} // namespace PathList
