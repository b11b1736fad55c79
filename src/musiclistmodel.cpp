#include "musiclistmodel.h"

#include "common/style.h"
#include "songs/songcolumns.h"
#include "songs/spokenwords.h"
#include "views/songcells.h"

#include <QBrush>

MusicListModel::MusicListModel(QObject* parent) : FlatListModel(parent) {}

void MusicListModel::setDataSourceList(QList<QMusicInfo*>* list, int columnMode, bool flag)
{
    const bool kept = columnMode == SongCells::columnModeGrid || columnMode == SongCells::columnModeDupTable;
    setSource(list, kept ? columnMode : SongCells::columnModeTable, flag);
}

QVariant MusicListModel::foreground(const QMusicInfo& song, int column) const
{
    // Oddity 28: column 6 is red in every row, for it never has a value.
    const bool red = column <= SongColumns::ColumnDuplicates && SongCells::isEmpty(&song, column);
    return red ? QBrush(Style::undefinedText) : QVariant();
}

QVariant MusicListModel::data(const QModelIndex& index, int role) const
{
    const QMusicInfo* song = nodeFromIndex(index);
    if (!song)
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return SongCells::text(song, index.column());
    case Qt::DecorationRole:
        return isGrid() && index.column() == 0 ? SongCells::coverIcon(song) : QVariant();
    case Qt::ForegroundRole:
        return foreground(*song, index.column());
    default:
        return SongCells::plainRole(role, index.row(), isGrid());
    }
}

QVariant MusicListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    // Oddity 4: "Track ID" stands over the track number.
    static const char* const headers[] = {"Title", "Artist",   "Album",     "Genre",
                                          "Year",  "Track ID", "Duplicates"};
    return isGrid() ? QVariant() : SongCells::header(headers, section, orientation, role);
}

QString MusicListModel::nameOf(int row) const
{
    const QMusicInfo* const song = nodeFromIndex(index(row, 0));
    return song ? SpokenWords::of(song) : QString();
}

QString MusicListModel::restOf(int row) const
{
    const QMusicInfo* const song = nodeFromIndex(index(row, 0));
    return song ? SpokenWords::about(song) : QString();
}
