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
    enum class By { TitleAndDuration, ArtistAndTitle };

    explicit SongList(By by) : m_by(by) {}

    void add(const SongFile& song);
    int size() const { return int(m_facts.size()); }
    /// What the list keeps of a song: all but album, genre, year, track and cover.
    SongFile at(int position) const;
    /// The groups of duplicates as positions (Classification).
    QVector<QVector<int>> groups() const;

private:
    struct Facts
    {
        std::uint64_t bytes;
        std::uint32_t bitRate;
        std::uint32_t sampleRate;
        const char* texts; ///< path, title and artist, one zero behind each
        std::int8_t format;
    };

    const char* keep(const std::string& texts);

    const By m_by;
    std::vector<Facts> m_facts;
    QStringList m_keys; ///< titles, or artists and titles
    QList<quint64> m_durations;
    std::deque<std::string> m_blocks; ///< of texts; they never move
};
