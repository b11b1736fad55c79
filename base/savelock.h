#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

namespace base {
/// Keeps the saves of one file apart as long as it lives: in this process for certain. Other processes are
/// waited for, but for a moment only, since whoever may read a file can hold it for ever: what is certain is
/// that a save looks whether the file is still the one that it read.
class SaveLock
{
public:
    /// `target` is no link.
    explicit SaveLock(const std::string& target);

private:
    struct Close
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::unique_lock<std::mutex> m_inProcess;
    std::unique_ptr<std::FILE, Close> m_file;
};
} // namespace base
