#pragma once

#include <QList>

struct QMusicInfo;

/// One group of duplicates: first the song that opened the group, then the others in the order of all songs.
struct DupMusicInfo
{
    QList<QMusicInfo*> musicList; ///< not owned
};
