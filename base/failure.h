#pragma once

#include <string>

namespace base {
/// Why a file was not written: what the log says, and what a program can tell apart.
struct Failure
{
    enum class Kind {
        Other,
        FileReadOnly,
        FolderReadOnly,
        DiskReadOnly,
        NoPermission,
        DiskFull,
        Gone,             ///< there is no such file any more
        ChangedMeanwhile, ///< by another program
        ChangedSince,     ///< by another program, after the change that was to be taken back
        NotKept,          ///< what was to be put back
        NotSafe,          ///< the new file would not be what it should
        InUse             ///< by another program, which keeps others out
    };

    std::string text;
    Kind kind = Kind::Other;
};

/// What an error number of the system stands for.
Failure::Kind kindOf(int errorNumber);
/// What the system has just refused, by errno; its own words follow `what`.
Failure systemFailure(const std::string& what = std::string());
} // namespace base
