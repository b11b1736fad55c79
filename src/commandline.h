#pragma once

#include <QStringList>

/// What the command line asks for.
struct CommandLine
{
    /// Before the application object is made, on the main thread; needs no display. Help and version go to
    /// the standard output, errors to the standard error. A named path that does not exist is left out, and
    /// an error only when no other is left.
    static CommandLine read(int argc, char* argv[]);

    bool isAnswered = false; ///< everything is said: the program ends with the exit code
    int exitCode = 0;        ///< 0, or 2 for a command line that cannot be followed
    bool isLocal = false;    ///< to begin in the local clean mode, as it does with paths
    QStringList paths;       ///< the existing files and folders to add, absolute
    QString library;         ///< the music library to use, absolute; empty for the usual one
};
