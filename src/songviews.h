#pragma once

#include "songs/shownlist.h"
#include "songs/songfind.h"

#include <QObject>
#include <QSet>

#include <array>

class DupMusicListModel;
class MusicListModel;
class QAbstractItemView;
class QListView;
class QModelIndex;
class QTableView;
class ViewVeil;
struct DupMusicInfo;
struct QMusicInfo;

/// The four views on the songs of a collection, a grid and a table of songs and a grid and a table of
/// duplicate groups, with the models behind them. The two of a kind show the same list and the same
/// selection. They are given the true lists, and show what is found of them, in the order asked for; rows are
/// those of the lists that they show.
class SongViews : public QObject
{
    Q_OBJECT

public:
    struct Widgets
    {
        QListView* songGrid;
        QTableView* songTable;
        QListView* groupGrid;
        QTableView* groupTable;
    };

    /// Sets the widgets up on these lists; they stay hidden and their owner's.
    SongViews(const Widgets& widgets, QList<QMusicInfo*>* songs, QList<DupMusicInfo*>* groups,
              QObject* parent);

    /// The lists are read in place: after a change of one, or of what its songs say, its views are refreshed,
    /// or shown another list. They may be in sight.
    void showSongs(QList<QMusicInfo*>* songs);
    void showGroups(QList<DupMusicInfo*>* groups, int tableColumns);
    void refreshSongs();
    void refreshGroups();
    /// Songs were edited, came or went; before views are refreshed. What is found is then looked for anew.
    void forgetTexts() { m_find.forgetTexts(); }
    /// These songs left the true lists, and groups with them: both show without them. Among all songs nothing
    /// is looked for or ordered again.
    void leave(const QSet<QMusicInfo*>& songs);

    /// Both views of a kind tell the receiver's slots which index was clicked.
    void connectSongs(const QObject* receiver, const char* clicked, const char* doubleClicked) const;
    void connectGroups(const QObject* receiver, const char* clicked, const char* doubleClicked) const;

    /// The row of a group; -1 for one that does not show.
    int rowOf(const DupMusicInfo* group) const { return m_groups.rowOf(group); }
    /// How many groups show, and which is at a row.
    int groupCount() const { return m_groups.count(); }
    DupMusicInfo* groupAt(int row) const { return m_groups.list()->at(row); }
    /// The row of the group that was marked last, even if it is gone and others have moved up there; the
    /// first one once something else is looked for that the group does not have.
    int groupPlace() const { return m_groupPlace; }

    /// Marks it in both views of the kind, as soon as it shows; null for none. Forgotten with the list. The
    /// row, or -1.
    int selectSong(const QMusicInfo* song);
    int selectGroup(const DupMusicInfo* group);
    /// Null for an index without one.
    static QMusicInfo* songOf(const QModelIndex& index);
    static DupMusicInfo* groupOf(const QModelIndex& index);
    /// The song of an index of this view, of a group the first; null for an index without one.
    QMusicInfo* firstSongOf(const QAbstractItemView& view, const QModelIndex& index) const;

    QAbstractItemView* view(bool groups, bool grid) const;
    /// The same, which is in sight from now on.
    QAbstractItemView* choose(bool groups, bool grid);
    /// The one that is not hidden; null while none is to be seen.
    QAbstractItemView* shownView() const;
    bool showsGroups(const QAbstractItemView& view) const;
    std::array<QAbstractItemView*, 4> all() const;
    /// The words of find(), in one line.
    QString lookedFor() const { return m_typed.simplified(); }
    void setGroupsEnabled(bool enabled);
    /// Whether they look as if they could not be clicked; they let everything through all the same.
    void setSongsLocked(bool locked);
    /// Shows files of covers as they are now.
    void repaintCovers();

public slots:
    /// Shows what has all these words; the marked song or group stays marked where it shows.
    void find(const QString& typed);
    /// Something is about to be looked for.
    void prepareFind();

signals:
    /// How many rows there are in sight, and how many in the true list.
    void listShown(int found, int all);

private:
    void giveSongs();
    void giveGroups();
    void tellShown();
    void orderSongs(int clicked);
    void orderGroups(int clicked);
    void giveSongsMarked();
    void giveGroupsMarked();

    Widgets m_widgets;
    MusicListModel* m_allMusicGridModel;
    MusicListModel* m_allMusicTableModel;
    DupMusicListModel* m_dupMusicGridModel;
    DupMusicListModel* m_dupMusicTableModel;
    std::array<ViewVeil*, 4> m_veils; ///< as the views in all()
    SongFind m_find;
    QString m_typed;
    ShownList<QMusicInfo> m_songs;
    ShownList<DupMusicInfo> m_groups;
    int m_groupColumns = 0; ///< of the table
    bool m_groupsChosen = false;
    const QMusicInfo* m_markedSong = nullptr; ///< whether it shows or not; may be gone
    const DupMusicInfo* m_markedGroup = nullptr;
    int m_groupPlace = 0;
};
