#pragma once

#include <string>

/// The log of the audio core.
namespace CoreLog {
/// Keeps its lines from standard error, unless they are wanted there.
void hold(bool isWanted);
/// The last line on this thread since the last call; empty for none.
std::string takeLast();
} // namespace CoreLog
