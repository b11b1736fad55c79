#include "views/songcells.h"

#include "common/style.h"
#include "covers/coverloader.h"
#include "songs/songcolumns.h"
#include "songs/songfields.h"

#include <QBrush>
#include <QIcon>

bool SongCells::isEmpty(const QMusicInfo* song, int column)
{
    return SongColumns::text(song, column).isEmpty();
}

QVariant SongCells::text(const QMusicInfo* song, int column)
{
    if (column < SongColumns::ColumnTitle || column > SongColumns::ColumnTrack)
        return QVariant();
    const QString shown = SongColumns::text(song, column);
    return shown.isEmpty() ? QStringLiteral("unknown") : shown;
}

QVariant SongCells::coverIcon(const QMusicInfo* song)
{
    return CoverLoader::icon(SongFields::coverPath(song));
}

QVariant SongCells::stripe(int row)
{
    return row % 2 == 0 ? QBrush(Qt::white) : QBrush(Style::stripe);
}

QString SongCells::toolTip()
{
    return QStringLiteral("Double click to start playing");
}

QVariant SongCells::plainRole(int role, int row, bool grid)
{
    switch (role) {
    case Qt::ToolTipRole:
        return toolTip();
    case Qt::TextAlignmentRole:
        return int(Qt::AlignCenter);
    case Qt::BackgroundRole:
        return grid ? QVariant() : stripe(row);
    default:
        return QVariant();
    }
}

QVariant SongCells::header(const char* const (&headers)[7], int section, Qt::Orientation orientation,
                           int role)
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= 7)
        return QVariant();
    return QString::fromLatin1(headers[section]);
}
