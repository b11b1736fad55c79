#pragma once

#include <QString>

struct QMusicInfo;

/// What tells copies of one song apart, for whoever looks closer.
namespace SongTip {
/// Path, size, date and tags of the song, a line each, as plain text. Looks for the file.
QString of(const QMusicInfo* song);
} // namespace SongTip
