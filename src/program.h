#pragma once

/// The whole run of the program, from its command line to its exit code. Called once, by `main`.
int runProgram(int argc, char* argv[]);
