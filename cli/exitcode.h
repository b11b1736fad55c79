#pragma once

/// What the program ends with, beside what a wrong call does (CommandLine::wrongCall).
namespace ExitCode {
constexpr int done = 0;
constexpr int found = 1;   ///< something that --fail-on names
constexpr int failed = 3;  ///< some files, each named
constexpr int ended = 130; ///< interrupted
} // namespace ExitCode
