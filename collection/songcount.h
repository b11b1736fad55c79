#pragma once

#include "collection/folderwalk.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

/// Counts on a thread of its own how many files an intake of these paths will read, ahead of it.
class SongCount final : private FolderWalk::Visitor
{
public:
    SongCount(FolderWalk::Rules rules, std::vector<std::string> paths);
    /// Ends what is not done.
    ~SongCount() override;
    SongCount(const SongCount&) = delete;
    SongCount& operator=(const SongCount&) = delete;

    /// 0 as long as it is not known.
    std::uint64_t total() const { return m_isDone ? m_found.load() : 0; }

private:
    void count(FolderWalk::Rules rules, const std::vector<std::string>& paths);
    void found(const std::string&) override { ++m_found; }
    void failed(const std::string&, const std::string&) override {}
    void leftOut(const std::string&) override {}
    bool goesOn() override { return !m_isEnding; }

    std::atomic<std::uint64_t> m_found{0};
    std::atomic<bool> m_isDone{false};
    std::atomic<bool> m_isEnding{false};
    std::thread m_thread;
};
