#pragma once

#include "newfile.h"

#include <string>

namespace itunes {
/// Keeps a copy of the library file beside it, once: the file as the first change finds it. A broken file is
/// no backup and takes no better one's place.
class LibraryBackup
{
public:
    enum class Result {
        Kept,
        Broken, ///< the library is: there is nothing to keep yet
        Failed
    };

    explicit LibraryBackup(const std::string& libraryPath);

    /// In this state the file was read whole: it need not be looked through again.
    void knowWhole(const audiocore::platform::FileState& state) { m_whole = state; }
    /// What is not kept has a reason.
    Result keep(std::string& error);
    /// Hands the copy to the device, which may take its time. Only after keep(), one call at a time, beside
    /// calls of the others.
    bool flush(std::string& error);

private:
    bool isWhole(const audiocore::platform::NewFile& copy, std::string& error) const;

    const std::string m_library;
    const std::string m_path;
    bool m_isKept = false;
    bool m_isFlushed = false;
    audiocore::platform::FileState m_whole;
    audiocore::platform::FileState m_broken;
    std::string m_brokenReason;
};
} // namespace itunes
