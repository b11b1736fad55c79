#pragma once

#include <QByteArray>
#include <QList>
#include <QVector>

#include <string>
#include <unordered_map>
#include <vector>

struct DupMusicInfo;
struct QMusicInfo;

/// Finds songs by what somebody typed: every word occurs in the title, the artist, the album, the genre or
/// the name of the file, without regard to case, accents and width. Keeps the folded texts of the songs that
/// were asked for. One thread at a time.
class SongFind
{
public:
    void setTyped(const QString& typed);
    /// Whether anything is looked for.
    bool isActive() const { return !m_words.isEmpty(); }
    bool finds(const QMusicInfo* song);
    /// A group is found with one of its songs.
    bool finds(const DupMusicInfo* group);

    /// Reads the texts of these songs ahead, which the first look at each takes time for.
    void prepare(const QList<QMusicInfo*>& songs);
    void prepare(const QList<DupMusicInfo*>& groups);
    /// Songs were edited or went: texts are read anew.
    void forgetTexts();
    /// Bytes, of the folded texts alone and with what keeps them.
    std::size_t textSize() const { return m_texts.size(); }
    std::size_t memory() const;

private:
    std::size_t positionOf(const QMusicInfo* song);

    QVector<QByteArray> m_words;
    std::string m_texts;             ///< of one song behind the other
    std::vector<std::size_t> m_ends; ///< of each there
    std::vector<const QMusicInfo*> m_songs;
    std::unordered_map<const QMusicInfo*, std::size_t> m_positions;
    std::size_t m_next = 0; ///< lists are mostly looked through in the order of the time before
};
