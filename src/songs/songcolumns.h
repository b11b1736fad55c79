#pragma once

#include <QString>

struct DupMusicInfo;
struct QMusicInfo;

/// The columns of the tables, and what stands in them.
namespace SongColumns {
enum Column {
    ColumnTitle,
    ColumnArtist,
    ColumnAlbum,
    ColumnGenre,
    ColumnYear,
    ColumnTrack,
    ColumnDuplicates
};

/// The song's value as text; empty for the empty text, the number 0 and a column without a value.
QString text(const QMusicInfo* song, int column);
/// A group's: that of its first song, or how many songs it has.
QString text(const DupMusicInfo* group, int column);
} // namespace SongColumns
