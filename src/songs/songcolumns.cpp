#include "songs/songcolumns.h"

#include "dupmusicinfo.h"
#include "songs/songfields.h"

QString SongColumns::text(const QMusicInfo* song, int column)
{
    const auto number = [](quint64 n) { return n == 0 ? QString() : QString::number(n); };
    switch (column) {
    case ColumnTitle:
        return SongFields::title(song);
    case ColumnArtist:
        return SongFields::artist(song);
    case ColumnAlbum:
        return SongFields::album(song);
    case ColumnGenre:
        return SongFields::genre(song);
    case ColumnYear:
        return number(SongFields::year(song));
    case ColumnTrack:
        return number(SongFields::trackNumber(song));
    default:
        return QString();
    }
}

QString SongColumns::text(const DupMusicInfo* group, int column)
{
    if (column == ColumnDuplicates)
        return QString::number(group->musicList.size());
    return group->musicList.isEmpty() ? QString() : text(group->musicList.first(), column);
}
