#pragma once

/// What asks the program to end: Ctrl+C, or a signal of the system. The work at hand is done first; asking
/// again ends it at once.
namespace Interruption {
void hold();
bool hasCome();
} // namespace Interruption
