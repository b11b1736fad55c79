#pragma once

#include <QAbstractItemModel>

struct DupMusicInfo;

/// Shows a list of duplicate groups, each by its first song. The rules of MusicListModel about the list hold
/// here too.
class DupMusicListModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    explicit DupMusicListModel(QObject* parent = nullptr);

    /// Column mode 1: a grid; everything else: a table of seven columns. The flag is stored and without
    /// meaning.
    void setDupMusicDataSource(QList<DupMusicInfo*>* list, int columnMode, bool flag);
    /// After the list was changed in place.
    void refresh();

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    /// The group of an index; null for an index without one.
    DupMusicInfo* nodeFromIndex(const QModelIndex& index) const;

private:
    bool isGrid() const { return m_nColumnCount == 1; }
    QVariant cover(const DupMusicInfo& group) const;
    QVariant displayed(const DupMusicInfo& group, int column) const;

    QList<DupMusicInfo*>* m_pDupMusicList = nullptr;
    int m_nColumnCount = 1;
    bool m_bReserved = false;
};
