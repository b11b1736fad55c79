#pragma once

#include <QObject>

#include <array>

class DupMusicListModel;
class MusicListModel;
class QAbstractItemView;
class QListView;
class QModelIndex;
class QTableView;
struct DupMusicInfo;
struct QMusicInfo;
template <typename T>
class QList;

/// The four views on the songs of a collection, a grid and a table of songs and a grid and a table of
/// duplicate groups, with the models behind them. The two of a kind show the same list and the same
/// selection.
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

    /// The lists are read in place: after a change of one its views are refreshed, or shown another list.
    void showSongs(QList<QMusicInfo*>* songs);
    void showGroups(QList<DupMusicInfo*>* groups, int tableColumns);
    void refreshSongs();
    void refreshGroups();

    /// Both views of a kind tell the receiver's slots which index was clicked.
    void connectSongs(const QObject* receiver, const char* clicked, const char* doubleClicked) const;
    void connectGroups(const QObject* receiver, const char* clicked, const char* doubleClicked) const;

    void selectSong(int row);
    void selectGroup(int row);
    /// Null for an index without one.
    static QMusicInfo* songOf(const QModelIndex& index);
    static DupMusicInfo* groupOf(const QModelIndex& index);
    /// The song of an index of this view, of a group the first; null for an index without one.
    QMusicInfo* firstSongOf(const QAbstractItemView& view, const QModelIndex& index) const;

    QAbstractItemView* view(bool groups, bool grid) const;
    /// The one that is not hidden; null while none is to be seen.
    QAbstractItemView* shownView() const;
    bool showsGroups(const QAbstractItemView& view) const;
    std::array<QAbstractItemView*, 4> all() const;
    void setGroupsEnabled(bool enabled);
    /// Shows files of covers as they are now.
    void repaintCovers();

private:
    Widgets m_widgets;
    MusicListModel* m_allMusicGridModel;
    MusicListModel* m_allMusicTableModel;
    DupMusicListModel* m_dupMusicGridModel;
    DupMusicListModel* m_dupMusicTableModel;
};
