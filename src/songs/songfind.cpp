#include "songs/songfind.h"

#include "collection/textfolding.h"
#include "dupmusicinfo.h"
#include "songs/songfields.h"

#include <algorithm>
#include <string_view>

namespace {
QString fileName(const QMusicInfo* song)
{
    const QString path = SongFields::audioPath(song);
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}
} // namespace

void SongFind::setTyped(const QString& typed)
{
    m_words = TextFolding::words(typed);
}

void SongFind::forgetTexts()
{
    m_texts.clear();
    m_ends.clear();
    m_songs.clear();
    m_positions.clear();
    m_next = 0;
}

std::size_t SongFind::positionOf(const QMusicInfo* song)
{
    if (m_next < m_songs.size() && m_songs[m_next] == song)
        return m_next++;
    const auto [place, isNew] = m_positions.try_emplace(song, m_songs.size());
    if (isNew) {
        for (const QString& text : {SongFields::title(song), SongFields::artist(song),
                                    SongFields::album(song), SongFields::genre(song), fileName(song)}) {
            TextFolding::append(m_texts, text);
            m_texts += '\n'; // which no word has
        }
        m_songs.push_back(song);
        m_ends.push_back(m_texts.size());
    }
    m_next = place->second + 1;
    return place->second;
}

bool SongFind::finds(const QMusicInfo* song)
{
    const std::size_t position = positionOf(song);
    const std::size_t begin = position == 0 ? 0 : m_ends[position - 1];
    const auto text = std::string_view(m_texts).substr(begin, m_ends[position] - begin);
    return std::all_of(m_words.begin(), m_words.end(), [text](const QByteArray& word) {
        return text.find(std::string_view(word.constData(), std::size_t(word.size()))) != text.npos;
    });
}

bool SongFind::finds(const DupMusicInfo* group)
{
    return std::any_of(group->musicList.begin(), group->musicList.end(),
                       [this](const QMusicInfo* song) { return finds(song); });
}

void SongFind::prepare(const QList<QMusicInfo*>& songs)
{
    const auto count = std::size_t(songs.size());
    m_positions.reserve(count);
    m_songs.reserve(count);
    m_ends.reserve(count);
    for (const QMusicInfo* song : songs)
        positionOf(song);
    m_texts.shrink_to_fit();
}

void SongFind::prepare(const QList<DupMusicInfo*>& groups)
{
    for (const DupMusicInfo* group : groups)
        for (const QMusicInfo* song : group->musicList)
            positionOf(song);
    m_texts.shrink_to_fit();
}

std::size_t SongFind::memory() const
{
    // A place in the table, and a node with a link in a block of the heap's.
    const std::size_t node = sizeof(void*) + sizeof(*m_positions.begin()) + sizeof(void*);
    return m_texts.capacity() + m_ends.capacity() * sizeof(m_ends[0]) + m_songs.capacity() * sizeof(void*) +
           m_positions.bucket_count() * sizeof(void*) + m_positions.size() * node;
}
