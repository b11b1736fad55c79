#pragma once

#include "views/flatlistmodel.h"
#include "views/spokenrows.h"

struct DupMusicInfo;

/// Shows a list of duplicate groups, each by its first song. The rules of MusicListModel about the list hold
/// here too.
class DupMusicListModel : public FlatListModel<DupMusicInfo>, public SpokenRows
{
    Q_OBJECT

public:
    explicit DupMusicListModel(QObject* parent = nullptr);

    /// Column mode 1: a grid; everything else: a table of seven columns (oddity 27). The flag is stored and
    /// without meaning.
    void setDupMusicDataSource(QList<DupMusicInfo*>* list, int columnMode, bool flag);
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QString nameOf(int row) const override;
    QString restOf(int row) const override;

private:
    QVariant cover(const DupMusicInfo& group) const;
    QVariant displayed(const DupMusicInfo& group, int column) const;
};
