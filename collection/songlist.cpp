#include "collection/songlist.h"

#include "collection/classification.h"
#include "collection/songlikeness.h"

#include <algorithm>
#include <cstring>

namespace {
constexpr std::size_t blockSize = 1 << 20;
} // namespace

/// Where the texts lie from now on.
const char* SongList::keep(const std::string& texts)
{
    if (m_blocks.empty() || m_blocks.back().capacity() - m_blocks.back().size() < texts.size()) {
        m_blocks.emplace_back();
        m_blocks.back().reserve(std::max(blockSize, texts.size()));
    }
    std::string& block = m_blocks.back();
    const std::size_t begin = block.size();
    block += texts;
    return block.data() + begin;
}

void SongList::add(const SongFile& song)
{
    // A zero within a text would be taken for its end.
    QString title = song.title;
    QString artist = song.artist;
    const std::string texts = song.path + '\0' + title.remove(QChar()).toStdString() + '\0' +
                              artist.remove(QChar()).toStdString() + '\0';
    m_facts.push_back({song.bytes, std::uint32_t(song.bitRate), std::uint32_t(song.sampleRate), keep(texts),
                       std::int16_t(song.format)});
    if (m_keepsStates)
        m_states.push_back(song.state);
    if (song.isTrack())
        m_tracks.push_back({song.persistentId, song.kind});
    m_keys.append(m_by == By::TitleAndDuration ? song.title
                  : m_by == By::ArtistAndTitle ? SongLikeness::artistAndTitle(song.artist, song.title)
                                               : QString());
    m_keys.back().squeeze();
    m_durations.append(song.milliseconds);
}

SongFile SongList::at(int position) const
{
    const Facts& facts = m_facts[std::size_t(position)];
    const char* const title = facts.texts + std::strlen(facts.texts) + 1;
    const char* const artist = title + std::strlen(title) + 1;
    SongFile song;
    song.path = facts.texts;
    song.title = QString::fromUtf8(title);
    song.artist = QString::fromUtf8(artist);
    song.milliseconds = m_durations.at(position);
    song.bytes = facts.bytes;
    song.bitRate = facts.bitRate;
    song.sampleRate = facts.sampleRate;
    song.format = facts.format;
    if (m_keepsStates)
        song.state = m_states[std::size_t(position)];
    if (!m_tracks.empty()) {
        song.persistentId = m_tracks[std::size_t(position)].persistentId;
        song.kind = m_tracks[std::size_t(position)].kind;
    }
    return song;
}

QVector<QVector<int>> SongList::groups() const
{
    return m_by == By::TitleAndDuration ? Classification::groupDuplicates(m_keys, m_durations)
                                        : Classification::groupEqual(m_keys);
}
