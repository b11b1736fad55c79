#include "collection/songlooks.h"

#include "collection/parallelwork.h"

bool SongLooks::into(const std::vector<int>& songs, const std::function<void(int song)>& look)
{
    const int count = int(songs.size());
    return ParallelWork::run(
        count, [&](int piece) { look(songs[std::size_t(piece)]); },
        [&](int done) { return goesOn(done, count); });
}

bool SongLooks::goesOn(int done, int of)
{
    if (!m_isEnded && !m_listener.goesOn(done, of))
        m_isEnded = true;
    return !m_isEnded;
}

void SongLooks::tellFailures() const
{
    for (const auto& [song, reason] : m_failed)
        m_listener.failed(song, reason);
}

void SongLooks::fail(int song, const std::string& reason)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_failed[song] = reason;
}
