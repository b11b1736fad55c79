#include "songs/songclassification.h"

#include "collection/classification.h"
#include "songs/songfields.h"

#include <utility>

void SongClassification::clear()
{
    collect({});
    clearGroups();
    m_isDone = false;
}

void SongClassification::clearGroups()
{
    m_dupMusicInfoList.clear();
    m_formerGroups = std::exchange(m_groups, Groups());
}

void SongClassification::collect(const QList<QMusicInfo*>& songs)
{
    m_undefinedMusicList.clear();
    m_classifiedList.clear();
    m_titleList.clear();
    m_durationList.clear();
    for (QMusicInfo* song : songs) {
        if (!SongFields::available(song))
            continue;
        const QString title = SongFields::title(song);
        m_classifiedList.append(song);
        m_titleList.append(title);
        m_durationList.append(SongFields::duration(song));
        if (Classification::isUndefined(title, SongFields::artist(song), SongFields::album(song),
                                        SongFields::genre(song)))
            m_undefinedMusicList.append(song);
    }
}

void SongClassification::group()
{
    clearGroups();
    for (const QVector<int>& positions : Classification::groupDuplicates(m_titleList, m_durationList)) {
        m_groups.push_back(std::make_unique<DupMusicInfo>());
        m_dupMusicInfoList.append(m_groups.back().get());
        for (const int position : positions)
            m_groups.back()->musicList.append(m_classifiedList.at(position));
    }
    m_isDone = true;
}

int SongClassification::rowAfter(int row, bool isThere, int rows)
{
    return rows > int(isThere) ? (row + int(isThere)) % rows : -1;
}

int SongClassification::rowOf(QMusicInfo* song) const
{
    for (int row = 0; row < m_dupMusicInfoList.size(); ++row)
        if (m_dupMusicInfoList.at(row)->musicList.contains(song))
            return row;
    return -1;
}
