#include "musiclistmodel.h"

#include "songcells.h"

#include <QBrush>

MusicListModel::MusicListModel(QObject* parent) : QAbstractItemModel(parent) {}

void MusicListModel::setDataSourceList(QList<QMusicInfo*>* list, int columnMode, bool flag)
{
    beginResetModel();
    m_pMusicList = list;
    const bool kept = columnMode == SongCells::columnModeGrid || columnMode == SongCells::columnModeDupTable;
    m_nColumnCount = kept ? columnMode : SongCells::columnModeTable;
    m_bReserved = flag;
    endResetModel();
}

void MusicListModel::refresh()
{
    beginResetModel();
    endResetModel();
}

QModelIndex MusicListModel::index(int row, int column, const QModelIndex& parent) const
{
    if (row < 0 || column < 0 || parent.isValid() || !m_pMusicList || row >= m_pMusicList->size())
        return QModelIndex();
    return createIndex(row, column, m_pMusicList->at(row));
}

QModelIndex MusicListModel::parent(const QModelIndex&) const
{
    return QModelIndex();
}

int MusicListModel::rowCount(const QModelIndex& parent) const
{
    return m_pMusicList && !parent.isValid() ? m_pMusicList->size() : 0;
}

int MusicListModel::columnCount(const QModelIndex& parent) const
{
    return m_pMusicList && !parent.isValid() ? m_nColumnCount : 0;
}

QVariant MusicListModel::foreground(const QMusicInfo& song, int column) const
{
    // Column 6 is red in every row, for it never has a value.
    const bool red = column <= SongCells::ColumnDuplicates && SongCells::isEmpty(&song, column);
    return red ? QBrush(QColor(255, 0, 0)) : QVariant();
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
    case Qt::ToolTipRole:
        return SongCells::toolTip();
    case Qt::TextAlignmentRole:
        return int(Qt::AlignCenter);
    case Qt::BackgroundRole:
        return isGrid() ? QVariant() : SongCells::stripe(index.row());
    case Qt::ForegroundRole:
        return foreground(*song, index.column());
    default:
        return QVariant();
    }
}

QVariant MusicListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const char* const headers[] = {"Title", "Artist",   "Album",     "Genre",
                                          "Year",  "Track ID", "Duplicates"};
    if (isGrid() || orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= 7)
        return QVariant();
    return QString::fromLatin1(headers[section]);
}

QMusicInfo* MusicListModel::nodeFromIndex(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<QMusicInfo*>(index.internalPointer()) : nullptr;
}
