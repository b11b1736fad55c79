#include "dupmusiclistmodel.h"

#include "covers/coverloader.h"
#include "dupmusicinfo.h"
#include "songs/songcolumns.h"
#include "songs/songcover.h"
#include "songs/songfields.h"
#include "songs/spokenwords.h"
#include "views/songcells.h"

DupMusicListModel::DupMusicListModel(QObject* parent) : FlatListModel(parent) {}

void DupMusicListModel::setDupMusicDataSource(QList<DupMusicInfo*>* list, int columnMode, bool flag)
{
    setSource(list, columnMode == SongCells::columnModeGrid ? columnMode : SongCells::columnModeDupTable,
              flag);
}

QVariant DupMusicListModel::displayed(const DupMusicInfo& group, int column) const
{
    // Oddity 29: an empty title stays empty here.
    if (isGrid())
        return SongFields::title(group.musicList.first());
    if (column == SongColumns::ColumnDuplicates)
        return group.musicList.size();
    return SongCells::text(group.musicList.first(), column);
}

QVariant DupMusicListModel::cover(const DupMusicInfo& group) const
{
    // Oddity 30: a picture too narrow shows the generic cover; the song grid stretches it.
    return CoverLoader::icon(SongCover::shownPath(group.musicList.first()));
}

QVariant DupMusicListModel::data(const QModelIndex& index, int role) const
{
    const DupMusicInfo* group = nodeFromIndex(index);
    if (!group || group->musicList.isEmpty())
        return QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return displayed(*group, index.column());
    case Qt::DecorationRole:
        return isGrid() && index.column() == 0 ? cover(*group) : QVariant();
    default:
        return SongCells::plainRole(
            role, index.row(),
            isGrid()); // no role above the background: "unknown" stays in the default colour here
    }
}

QVariant DupMusicListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    // Oddity 3: "Lyrics" stands over the track number.
    static const char* const headers[] = {"Title", "Artist", "Album",     "Genre",
                                          "Year",  "Lyrics", "Duplicates"};
    return isGrid() ? QVariant() : SongCells::header(headers, section, orientation, role);
}

QString DupMusicListModel::nameOf(int row) const
{
    const DupMusicInfo* const group = nodeFromIndex(index(row, 0));
    return group && !group->musicList.isEmpty() ? SpokenWords::of(group) : QString();
}

QString DupMusicListModel::restOf(int row) const
{
    const DupMusicInfo* const group = nodeFromIndex(index(row, 0));
    return group && !group->musicList.isEmpty() ? SpokenWords::about(group->musicList.first()) : QString();
}
