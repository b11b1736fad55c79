#pragma once

#include <QAbstractItemModel>

struct QMusicInfo;

/// Shows a list of songs, as an icon grid of one column or as a table. Reads the list in place: it is not
/// owned, and whoever changes it resets or refreshes the model. GUI thread only.
class MusicListModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    explicit MusicListModel(QObject* parent = nullptr);

    /// Column mode 1: a grid; 7: seven columns; everything else: six. The flag is stored and without meaning.
    void setDataSourceList(QList<QMusicInfo*>* list, int columnMode, bool flag);
    /// After the list was changed in place.
    void refresh();

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    /// The song of an index; null for an index without one.
    QMusicInfo* nodeFromIndex(const QModelIndex& index) const;

private:
    bool isGrid() const { return m_nColumnCount == 1; }
    QVariant foreground(const QMusicInfo& song, int column) const;

    QList<QMusicInfo*>* m_pMusicList = nullptr;
    int m_nRowHint = 0;
    int m_nColumnCount = 1;
    bool m_bReserved = false;
};
