#pragma once

#include "collection/songfile.h"

#include <QList>
#include <QStringList>

#include <deque>
#include <string>
#include <vector>

/// Many songs in little memory, for finding out which are duplicates: 1,000,000 of them take some 200 MB.
/// One thread at a time.
class SongList
{
public:
    /// By what songs are compared.
    enum class By { TitleAndDuration, ArtistAndTitle, Sound, Content };

    /// Keeping the states of files takes 120 bytes more for each song.
    explicit SongList(By by, bool keepsStates = false) : m_by(by), m_keepsStates(keepsStates) {}

    void add(const SongFile& song);
    int size() const { return int(m_facts.size()); }
    /// What the list keeps of a song: all but album, genre, year, track, cover and, unless wanted, state.
    SongFile at(int position) const;
    const QList<quint64>& durations() const { return m_durations; } ///< milliseconds, 0 for none known
    std::string pathOf(int position) const { return m_facts[std::size_t(position)].texts; }
    /// The groups of duplicates as positions (Classification). By sound and by content there are none here:
    /// what tells these is in the files (SoundSearch, ContentSearch).
    QVector<QVector<int>> groups() const;

private:
    struct Facts
    {
        std::uint64_t bytes;
        std::uint32_t bitRate;
        std::uint32_t sampleRate;
        const char* texts; ///< path, title and artist, one zero behind each
        std::int16_t format;
    };

    /// What only tracks of a music library have.
    struct TrackFacts
    {
        std::uint64_t persistentId;
        QString kind;
    };

    const char* keep(const std::string& texts);

    const By m_by;
    const bool m_keepsStates;
    std::vector<Facts> m_facts;
    std::vector<FileState> m_states;  ///< where they are kept
    std::vector<TrackFacts> m_tracks; ///< where the songs are such
    QStringList m_keys;               ///< titles, or artists and titles
    QList<quint64> m_durations;
    std::deque<std::string> m_blocks; ///< of texts; they never move
};
