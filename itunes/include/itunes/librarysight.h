#pragma once

#include "itunes/itunestrackrecord.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace itunes {
class TrackStore;
}

/// A library file for who only looks: nothing is changed anywhere, and what an earlier run left beside it
/// waits on. Copies share what was read. One thread at a time.
class iTunesLibrarySight
{
public:
    /// Reads the file, with the changes that wait for it. Bytes as the system has them.
    explicit iTunesLibrarySight(const std::string& path);

    /// Why it could not be read, with line and column where the file is broken; empty when it was.
    const std::string& problem() const { return m_problem; }

    int count() const;
    const iTunesTrackRecord& at(int position) const;
    /// Its media file: bytes as the system has them; empty for a track without a file on this machine.
    std::string pathAt(int position) const;
    /// By which it can be changed; 0 where it has none, or has that of another track.
    std::uint64_t identifierAt(int position) const;

    /// How many tracks changes wait for that an earlier run left, or a program that is at work.
    std::size_t waiting() const { return m_waiting; }
    /// What is wrong with these, for people; empty when nothing is.
    const std::string& waitingProblem() const { return m_waitingProblem; }

private:
    std::shared_ptr<itunes::TrackStore> m_store;
    std::string m_problem;
    std::size_t m_waiting = 0;
    std::string m_waitingProblem;
};
