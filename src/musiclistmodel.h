#pragma once

#include "views/flatlistmodel.h"
#include "views/spokenrows.h"

struct QMusicInfo;

/// Shows a list of songs, as an icon grid of one column or as a table. Reads the list in place: it is not
/// owned, and whoever changes it resets or refreshes the model. GUI thread only.
class MusicListModel : public FlatListModel<QMusicInfo>, public SpokenRows
{
    Q_OBJECT

public:
    explicit MusicListModel(QObject* parent = nullptr);

    /// Column mode 1: a grid; 7: seven columns; everything else: six. The flag is stored and without meaning.
    void setDataSourceList(QList<QMusicInfo*>* list, int columnMode, bool flag);
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QString nameOf(int row) const override;
    QString restOf(int row) const override;

private:
    QVariant foreground(const QMusicInfo& song, int column) const;
};
