#include "songs/bestsong.h"

#include "collection/bestcopy.h"
#include "songs/songfields.h"

int BestSong::positionIn(const QList<QMusicInfo*>& group)
{
    QVector<BestCopy::Sound> copies;
    copies.reserve(group.size());
    for (const QMusicInfo* song : group)
        copies.append({SongFields::kind(song), SongFields::bitRateKbps(song), SongFields::sampleRate(song),
                       SongFields::duration(song)});
    return BestCopy::find(copies);
}
