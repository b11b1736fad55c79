#pragma once

#include "collection/songfile.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// Reads songs on several threads and hands them over in the order in which they were asked for, on the
/// thread that asks. A bounded number of them is under way at once. One thread at a time.
class SongReading
{
public:
    /// `take` gets each song, read or not. With 0 threads, or where none can be made, the caller's reads.
    explicit SongReading(std::function<void(SongFile&&)> take, unsigned threads = ownThreads());
    /// Waits for what is being read; forgets the rest.
    ~SongReading();
    SongReading(const SongReading&) = delete;
    SongReading& operator=(const SongReading&) = delete;

    /// As many as there are processors; 0 for a single one.
    static unsigned ownThreads();

    /// Has the file read; hands over what comes before it and is done.
    void add(const std::string& path);
    /// The same of what is known without reading.
    void add(SongFile&& known);
    /// Hands over all that was added.
    void finish();

private:
    struct Slot
    {
        SongFile song; ///< its path alone until it is read
        bool isDone = false;
    };

    Slot& slotOf(std::size_t number) { return m_slots[number % m_slots.size()]; }
    void append(SongFile&& song, bool isDone);
    bool isFirstDone();
    void handOverFirst();
    void readWaiting();

    const std::function<void(SongFile&&)> m_take;
    SongFileReader m_reader; ///< the caller's
    std::vector<Slot> m_slots;
    std::mutex m_mutex; ///< held for all below
    std::condition_variable m_added;
    std::condition_variable m_done;
    std::size_t m_first = 0; ///< not handed over
    std::size_t m_next = 0;  ///< not taken by a thread
    std::size_t m_end = 0;   ///< behind the last one
    bool m_isEnding = false;
    std::vector<std::thread> m_threads;
};
