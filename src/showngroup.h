#pragma once

#include <QList>
#include <QtGlobal>

class DuplicateMusicDetailedWidget;
class QModelIndex;
class SongClassification;
class SongViews;
struct DupMusicInfo;
struct QMusicInfo;

/// The duplicate group that the panel shows and the views mark. GUI thread only.
class ShownGroup
{
public:
    /// None is owned; all must outlive its use.
    ShownGroup(DuplicateMusicDetailedWidget& panel, SongViews& views, const SongClassification& songs)
        : m_panel(panel), m_views(views), m_songs(songs)
    {
    }

    /// Of the group that was shown last, in the list of all groups, even if it is gone.
    qint64 row() const { return m_nCurrentDupRow; }
    /// The group that shows behind it, or behind where it was, by its row in that list; -1 when there is no
    /// other.
    int next() const;
    /// The row of the views, as they show the groups, that lies so many steps from the group; -1 for none.
    int rowBeside(int steps) const;
    /// The songs that its panel, while in sight, is told to keep.
    QList<QMusicInfo*> keptSongs() const;

    void show(const QModelIndex& index);
    /// By its row in the list of all groups, whether it is found or not.
    void show(int row);
    /// The group that the first of the songs is in, if it is in one, with those to be kept.
    void show(const QList<QMusicInfo*>& songs, const QList<QMusicInfo*>& kept);
    /// Models that were reset have forgotten which it is.
    void markAnew();
    /// The same once songs are gone; where the group is gone with them the column says that nothing is
    /// selected.
    void markOrHide();
    /// Groups are about to go: the panel shows none of them any more.
    void forget();

private:
    void show(DupMusicInfo* group);
    bool isLeft() const;

    DuplicateMusicDetailedWidget& m_panel;
    SongViews& m_views;
    const SongClassification& m_songs;
    qint64 m_nCurrentDupRow = 0;
};
