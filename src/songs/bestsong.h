#pragma once

#include <QList>

struct QMusicInfo;

/// Which song of a group sounds best, by the numbers of the mode in force.
namespace BestSong {
/// Its position, by the rule of BestCopy; -1 where none sounds worse.
int positionIn(const QList<QMusicInfo*>& group);
} // namespace BestSong
