#pragma once

#include "dupmusicinfo.h"

#include <QList>
#include <QStringList>

#include <memory>
#include <vector>

struct QMusicInfo;

/// The undefined songs and the duplicate groups of a list of songs. Songs stay their owner's; the groups
/// belong here, also those of the classification before, at which models point until they are reset.
class SongClassification
{
public:
    /// Empties the undefined songs and the groups.
    void clear();
    /// Finds the undefined ones among the songs, in their order, and notes what grouping needs. Songs without
    /// data of the mode in force count for nothing.
    void collect(const QList<QMusicInfo*>& songs);
    /// Groups the songs collected last, in place of the groups before.
    void group();

    QList<QMusicInfo*>& undefinedSongs() { return m_undefinedMusicList; }
    const QList<QMusicInfo*>& undefinedSongs() const { return m_undefinedMusicList; }
    QList<DupMusicInfo*>& groups() { return m_dupMusicInfoList; }
    const QList<DupMusicInfo*>& groups() const { return m_dupMusicInfoList; }
    /// The row behind one, or behind where one was until it was none any more, of so many; behind the last
    /// comes the first. -1 when there is no other.
    static int rowAfter(int row, bool isThere, int rows);
    /// The row of the group that a song is in; -1 for none.
    int rowOf(QMusicInfo* song) const;
    /// Whether songs were grouped since all was empty.
    bool isDone() const { return m_isDone; }

private:
    using Groups = std::vector<std::unique_ptr<DupMusicInfo>>;

    void clearGroups();

    QList<QMusicInfo*> m_undefinedMusicList;
    QList<DupMusicInfo*> m_dupMusicInfoList;
    Groups m_groups; ///< owns what m_dupMusicInfoList lists
    Groups m_formerGroups;
    QList<QMusicInfo*> m_classifiedList; ///< one entry per classified song, as in the two lists below
    QStringList m_titleList;
    QList<quint64> m_durationList;
    bool m_isDone = false;
};
