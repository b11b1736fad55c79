#pragma once

#include "collection/songsearch.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

/// The looks into songs of one search: on all processors, until its listener ends them. One thread at a time,
/// but for what may be called while it looks.
class SongLooks
{
public:
    explicit SongLooks(SongSearchListener& listener) : m_listener(listener) {}

    /// Has each of the songs looked into, several at once, and tells the listener how far that is; whether
    /// that was all. `look` must not throw.
    bool into(const std::vector<int>& songs, const std::function<void(int song)>& look);
    /// Whether the search does; the listener is not asked again once it has ended it.
    bool goesOn(int done, int of);
    /// Tells the listener of the songs that failed, in their order.
    void tellFailures() const;

    /// While it looks, any thread: ends the search.
    void end() { m_isEnded = true; }
    /// The same: whether it is ended.
    const std::atomic<bool>& isEnded() const { return m_isEnded; }
    /// The same: that a song cannot be compared.
    void fail(int song, const std::string& reason);

private:
    SongSearchListener& m_listener;
    std::atomic<bool> m_isEnded{false};
    std::mutex m_mutex; ///< held for the failures while there are threads
    std::map<int, std::string> m_failed;
};
