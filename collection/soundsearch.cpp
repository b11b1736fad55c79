#include "collection/soundsearch.h"

#include "audiocore/soundprint.h"
#include "collection/songfile.h"
#include "collection/songlooks.h"
#include "collection/soundgroups.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {
using SoundGroups::Fingerprint;

std::string whyNoPrint(SoundPrintStatus status, const std::string& path)
{
    switch (status) {
    case SOUND_PRINT_NO_FILE:
        return SongFileReader::whyUnreadable(path);
    case SOUND_PRINT_NO_MEMORY:
        return "there is not enough memory";
    default:
        return "its sound cannot be decoded";
    }
}

/// Those that have another song of their length, ascending.
std::vector<int> songsToHear(const QList<quint64>& durations)
{
    std::vector<std::pair<quint64, int>> byLength;
    for (int song = 0; song < durations.size(); ++song)
        if (durations.at(song) > 0)
            byLength.emplace_back(durations.at(song), song);
    std::sort(byLength.begin(), byLength.end());
    const auto areNear = [&byLength](std::size_t a, std::size_t b) {
        return b < byLength.size() && byLength[b].first - byLength[a].first <= SoundGroups::mostApart;
    };
    std::vector<int> songs;
    for (std::size_t i = 0; i < byLength.size(); ++i)
        if (areNear(i, i + 1) || (i > 0 && areNear(i - 1, i)))
            songs.push_back(byLength[i].second);
    std::sort(songs.begin(), songs.end());
    return songs;
}

class Hearing
{
public:
    Hearing(const SongList& songs, FingerprintCache& cache, SongSearchListener& listener)
        : m_songs(songs), m_cache(cache), m_listener(listener), m_looks(listener)
    {
    }

    QVector<QVector<int>> groups()
    {
        const bool isDone = m_looks.into(songsToHear(m_songs.durations()), [this](int song) { hear(song); });
        if (m_lacksModule)
            m_listener.cannotSearch("the part of the program that makes fingerprints cannot be loaded");
        m_looks.tellFailures();
        if (!isDone || m_lacksModule)
            return {};
        QVector<QVector<int>> found =
            SoundGroups::find(m_songs.durations(), [this](int song) { return nextToCompare(song); });
        return m_looks.isEnded() ? QVector<QVector<int>>() : found;
    }

private:
    void hear(int song)
    {
        const std::string path = m_songs.pathOf(song);
        const FileState state = FileState::of(path);
        if (m_cache.find(path, state))
            return;
        std::vector<std::uint32_t> values;
        const SoundPrintStatus status = MakeSoundPrint(path.c_str(), m_looks.isEnded(), values);
        if (status == SOUND_PRINT_NO_MODULE)
            lackModule();
        else if (status == SOUND_PRINT_MADE || status == SOUND_PRINT_TOO_SHORT)
            take(song, path, state, Fingerprint(values.begin(), values.end()));
        else if (status != SOUND_PRINT_CANCELLED)
            m_looks.fail(song, whyNoPrint(status, path));
    }
    void take(int song, const std::string& path, const FileState& state, const Fingerprint& fingerprint)
    {
        const bool isAsBefore = FileState::of(path) == state;
        if (isAsBefore && m_cache.keep(path, state, fingerprint))
            return;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_held.emplace(song, fingerprint);
    }
    void lackModule()
    {
        m_lacksModule = true;
        m_looks.end();
    }

    /// Once no thread is left. None when it was ended, so that the rest takes no time.
    Fingerprint nextToCompare(int song)
    {
        return m_looks.goesOn(m_compared++, m_songs.size()) ? fingerprintOf(song) : Fingerprint();
    }
    /// What another process took out of the cache meanwhile is like nobody.
    Fingerprint fingerprintOf(int song)
    {
        const auto held = m_held.find(song);
        if (held != m_held.end())
            return std::exchange(held->second, Fingerprint());
        const std::string path = m_songs.pathOf(song);
        return m_cache.find(path, FileState::of(path)).value_or(Fingerprint());
    }

    const SongList& m_songs;
    FingerprintCache& m_cache;
    SongSearchListener& m_listener;
    SongLooks m_looks;
    int m_compared = 0;
    std::atomic<bool> m_lacksModule{false};
    std::mutex m_mutex;                          ///< held for the next while there are threads
    std::unordered_map<int, Fingerprint> m_held; ///< what the cache does not have
};
} // namespace

QVector<QVector<int>> SoundSearch::groups(const SongList& songs, FingerprintCache& cache,
                                          SongSearchListener& listener)
{
    return Hearing(songs, cache, listener).groups();
}
