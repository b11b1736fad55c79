#pragma once

#include "base/failure.h"
#include "base/platform.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

/// The file of a history, in a folder of the user's state: a first line that tells it from any other file,
/// and lines that are only ever added. While it is open nobody else opens it. A line that a kill or a full
/// disk cut short is none. One thread at a time.
class HistoryJournal
{
public:
    using TakeLine = std::function<void(std::string_view line)>;

    /// Opens it for adding lines; folder and file are made where there are none. One that is larger than so
    /// many bytes forgets its oldest steps until it is half as large; the newest one stays. As long as
    /// another process, or another object, has it open it is waited for, and then Failure::InUse. Null with
    /// the reason; what is no journal stays as it is.
    static std::unique_ptr<HistoryJournal> open(const std::string& folder, std::int64_t mostBytes,
                                                std::chrono::milliseconds patience, base::Failure& failure);
    /// Hands out all lines of the one in the folder, without their line feeds, also while it is open
    /// elsewhere; none where there is no journal. False with the reason.
    static bool read(const std::string& folder, const TakeLine& take, base::Failure& failure);

    HistoryJournal(const HistoryJournal&) = delete;
    HistoryJournal& operator=(const HistoryJournal&) = delete;

    void read(const TakeLine& take) const;
    /// The highest number of a step; 0 without one. Reads no more than what follows its beginning.
    int lastStep() const;
    enum class Safety { Kill, PowerCut };
    /// Adds whole lines: they outlive what is named once the call answers true. Else nothing is added.
    bool append(const std::string& lines, Safety safety, base::Failure& failure);
    /// What was added outlives a power cut.
    void sync();

private:
    struct Close
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Close>;

    HistoryJournal() = default;
    bool lock(const std::string& path, std::chrono::milliseconds patience, base::Failure& failure);
    bool load(base::Failure& failure);
    bool shorten(std::int64_t mostBytes, base::Failure& failure);
    int firstStepToKeep(std::int64_t mostBytes) const;
    bool copyFrom(int first, std::FILE* to) const;

    std::string m_path;
    File m_lock;
    File m_file;
    std::int64_t m_end = 0; ///< where the next line goes
};
