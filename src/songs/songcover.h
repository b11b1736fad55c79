#pragma once

#include <QString>

struct QMusicInfo;

/// The cover that panels, and the grid of groups, show of a song.
namespace SongCover {
/// The file of the song's cover in the mode in force; the generic cover's where there is no picture.
QString shownPath(const QMusicInfo* song);
} // namespace SongCover
