#include "collection/contentsearch.h"

#include "audiocore/musicbytes.h"
#include "collection/classification.h"
#include "collection/contenthash.h"
#include "collection/songfile.h"
#include "collection/songlooks.h"

#include <cstdint>
#include <mutex>
#include <numeric>
#include <string>
#include <unordered_map>
#include <vector>

namespace {
std::string whyNotRead(MusicBytesStatus status, const std::string& path)
{
    switch (status) {
    case MUSIC_BYTES_NO_FILE:
        return SongFileReader::whyUnreadable(path);
    case MUSIC_BYTES_NO_MEMORY:
        return "there is not enough memory";
    default:
        return "it holds no music that can be compared";
    }
}

class ContentLook
{
public:
    ContentLook(const SongList& songs, SongSearchListener& listener)
        : m_songs(songs), m_looks(listener), m_counts(std::size_t(songs.size()), 0)
    {
    }

    QVector<QVector<int>> groups()
    {
        const bool isDone = m_looks.into(allSongs(), [this](int song) { measure(song); }) &&
                            m_looks.into(songsToRead(), [this](int song) { hash(song); });
        m_looks.tellFailures();
        return isDone ? Classification::groupEqual(m_keys) : QVector<QVector<int>>();
    }

private:
    std::vector<int> allSongs() const
    {
        std::vector<int> songs(std::size_t(m_songs.size()));
        std::iota(songs.begin(), songs.end(), 0);
        return songs;
    }
    std::vector<int> songsToRead()
    {
        std::unordered_map<std::int64_t, int> songsOfCount;
        for (const std::int64_t count : m_counts)
            ++songsOfCount[count];
        std::vector<int> songs;
        for (int song = 0; song < m_songs.size(); ++song) {
            m_keys.append(QString());
            const std::int64_t count = m_counts[std::size_t(song)];
            if (count > 0 && songsOfCount[count] > 1)
                songs.push_back(song);
        }
        return songs;
    }

    void measure(int song)
    {
        const std::string path = m_songs.pathOf(song);
        std::int64_t count = 0;
        const MusicBytesStatus status = MeasureMusicBytes(path.c_str(), count);
        if (status == MUSIC_BYTES_READ)
            m_counts[std::size_t(song)] = count;
        else
            m_looks.fail(song, whyNotRead(status, path));
    }
    void hash(int song)
    {
        const std::string path = m_songs.pathOf(song);
        ContentHash hash(m_secret);
        const MusicBytesStatus status =
            ReadMusicBytes(path.c_str(), [&](const char* bytes, std::size_t count) {
                hash.add(bytes, count);
                return !m_looks.isEnded();
            });
        if (status == MUSIC_BYTES_READ)
            note(song, QString::number(m_counts[std::size_t(song)]) + QLatin1Char(' ') +
                           QString::fromStdString(hash.result()));
        else if (status != MUSIC_BYTES_ENDED)
            m_looks.fail(song, whyNotRead(status, path));
    }
    void note(int song, const QString& key)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_keys[song] = key;
    }

    const SongList& m_songs;
    SongLooks m_looks;
    const ContentHash::Secret m_secret = ContentHash::Secret::drawn();
    std::vector<std::int64_t> m_counts; ///< of music bytes; each is one thread's
    std::mutex m_mutex;                 ///< held for the next while there are threads
    QStringList m_keys;                 ///< of those that may have a copy
};
} // namespace

QVector<QVector<int>> ContentSearch::groups(const SongList& songs, SongSearchListener& listener)
{
    return ContentLook(songs, listener).groups();
}
