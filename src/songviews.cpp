#include "songviews.h"

#include "common/sortheader.h"
#include "dupmusicinfo.h"
#include "dupmusiclistmodel.h"
#include "musiclistmodel.h"
#include "views/covergriddelegate.h"
#include "views/paintdupnumberdelegate.h"
#include "views/songcells.h"
#include "views/viewsetup.h"
#include "views/viewveil.h"

#include <QListView>
#include <QTableView>

#include <algorithm>

namespace {
constexpr int titleColumnWidth = 500;

void connectView(const QAbstractItemView* view, const QObject* receiver, const char* clicked,
                 const char* doubleClicked)
{
    QObject::connect(view, SIGNAL(clicked(QModelIndex)), receiver, clicked);
    QObject::connect(view, SIGNAL(doubleClicked(QModelIndex)), receiver, doubleClicked);
}

void markOrder(const QTableView& table, const ShownOrder& order)
{
    static_cast<SortHeader*>(table.horizontalHeader())->mark(order.column, order.backwards);
}
} // namespace

SongViews::SongViews(const Widgets& widgets, QList<QMusicInfo*>* songs, QList<DupMusicInfo*>* groups,
                     QObject* parent)
    : QObject(parent), m_widgets(widgets), m_allMusicGridModel(new MusicListModel(this)),
      m_allMusicTableModel(new MusicListModel(this)), m_dupMusicGridModel(new DupMusicListModel(this)),
      m_dupMusicTableModel(new DupMusicListModel(this))
{
    const auto views = all();
    std::transform(views.begin(), views.end(), m_veils.begin(),
                   [](QAbstractItemView* view) { return new ViewVeil(view); });
    // Before the views, which measure columns that are there.
    showSongs(songs);
    showGroups(groups, SongCells::columnModeDupTable);
    ViewSetup::grid(m_widgets.songGrid);
    ViewSetup::grid(m_widgets.groupGrid);
    ViewSetup::table(m_widgets.songTable);
    ViewSetup::table(m_widgets.groupTable);
    m_widgets.songGrid->setModel(m_allMusicGridModel);
    m_widgets.songTable->setModel(m_allMusicTableModel);
    m_widgets.groupGrid->setModel(m_dupMusicGridModel);
    m_widgets.groupTable->setModel(m_dupMusicTableModel);
    QFont captions = m_widgets.songGrid->font();
    captions.setPointSize(9);
    m_widgets.songGrid->setFont(captions);
    m_widgets.songGrid->setItemDelegate(new CoverGridDelegate(this));
    m_widgets.groupGrid->setItemDelegate(new PaintDupNumberDelegate(this));
    m_widgets.songTable->setColumnWidth(0, titleColumnWidth);
    connect(m_widgets.songTable->horizontalHeader(), &QHeaderView::sectionClicked, this,
            &SongViews::orderSongs);
    connect(m_widgets.groupTable->horizontalHeader(), &QHeaderView::sectionClicked, this,
            &SongViews::orderGroups);
    for (QWidget* view : all())
        view->hide();
}

void SongViews::showSongs(QList<QMusicInfo*>* songs)
{
    m_markedSong = nullptr;
    m_songs.show(songs, m_find);
    giveSongs();
}

void SongViews::showGroups(QList<DupMusicInfo*>* groups, int tableColumns)
{
    m_groupColumns = tableColumns;
    m_markedGroup = nullptr;
    m_groups.show(groups, m_find);
    giveGroups();
}

void SongViews::giveSongs()
{
    m_allMusicGridModel->setDataSourceList(m_songs.list(), SongCells::columnModeGrid, false);
    m_allMusicTableModel->setDataSourceList(m_songs.list(), SongCells::columnModeTable, false);
    tellShown();
}

void SongViews::giveGroups()
{
    m_dupMusicGridModel->setDupMusicDataSource(m_groups.list(), SongCells::columnModeGrid, false);
    m_dupMusicTableModel->setDupMusicDataSource(m_groups.list(), m_groupColumns, false);
    tellShown();
}

/// Of the kind in sight: the other is made anew before it is shown.
void SongViews::tellShown()
{
    const int found = m_groupsChosen ? m_groups.count() : m_songs.count();
    const int all = m_groupsChosen ? m_groups.countOfAll() : m_songs.countOfAll();
    emit listShown(found, all);
}

void SongViews::refreshSongs()
{
    showSongs(m_songs.source());
}

void SongViews::refreshGroups()
{
    showGroups(m_groups.source(), m_groupColumns);
}

void SongViews::leave(const QSet<QMusicInfo*>& songs)
{
    m_songs.drop(songs);
    giveSongs();
    forgetTexts();
    refreshGroups();
}

void SongViews::prepareFind()
{
    if (m_groupsChosen)
        m_groups.prepare(m_find);
    else
        m_songs.prepare(m_find);
}

void SongViews::find(const QString& typed)
{
    m_typed = typed;
    m_find.setTyped(typed);
    m_groupPlace = 0;
    if (m_groupsChosen) {
        m_groups.narrow(m_find);
        giveGroupsMarked();
    } else {
        m_songs.narrow(m_find);
        giveSongsMarked();
    }
    if (m_find.isActive())
        for (QAbstractItemView* view : all())
            view->scrollToTop();
}

void SongViews::orderSongs(int clicked)
{
    m_songs.orderBy(m_songs.order().afterClick(clicked), m_find);
    markOrder(*m_widgets.songTable, m_songs.order());
    giveSongsMarked();
}

void SongViews::orderGroups(int clicked)
{
    m_groups.orderBy(m_groups.order().afterClick(clicked), m_find);
    markOrder(*m_widgets.groupTable, m_groups.order());
    giveGroupsMarked();
}

/// Models that are reset forget the mark.
void SongViews::giveSongsMarked()
{
    giveSongs();
    selectSong(m_markedSong);
}

void SongViews::giveGroupsMarked()
{
    giveGroups();
    selectGroup(m_markedGroup);
}

void SongViews::connectSongs(const QObject* receiver, const char* clicked, const char* doubleClicked) const
{
    connectView(m_widgets.songGrid, receiver, clicked, doubleClicked);
    connectView(m_widgets.songTable, receiver, clicked, doubleClicked);
}

void SongViews::connectGroups(const QObject* receiver, const char* clicked, const char* doubleClicked) const
{
    connectView(m_widgets.groupGrid, receiver, clicked, doubleClicked);
    connectView(m_widgets.groupTable, receiver, clicked, doubleClicked);
}

int SongViews::selectSong(const QMusicInfo* song)
{
    m_markedSong = song;
    const int row = m_songs.rowOf(song);
    m_widgets.songGrid->setCurrentIndex(m_allMusicGridModel->index(row, 0));
    m_widgets.songTable->setCurrentIndex(m_allMusicTableModel->index(row, 0));
    return row;
}

int SongViews::selectGroup(const DupMusicInfo* group)
{
    m_markedGroup = group;
    const int row = m_groups.rowOf(group);
    if (row >= 0)
        m_groupPlace = row;
    m_widgets.groupGrid->setCurrentIndex(m_dupMusicGridModel->index(row, 0));
    m_widgets.groupTable->setCurrentIndex(m_dupMusicTableModel->index(row, 0));
    return row;
}

QMusicInfo* SongViews::songOf(const QModelIndex& index)
{
    return static_cast<QMusicInfo*>(index.internalPointer());
}

DupMusicInfo* SongViews::groupOf(const QModelIndex& index)
{
    return static_cast<DupMusicInfo*>(index.internalPointer());
}

QMusicInfo* SongViews::firstSongOf(const QAbstractItemView& view, const QModelIndex& index) const
{
    if (!showsGroups(view))
        return songOf(index);
    const DupMusicInfo* const group = groupOf(index);
    return group ? group->musicList.value(0) : nullptr;
}

QAbstractItemView* SongViews::view(bool groups, bool grid) const
{
    if (groups)
        return grid ? static_cast<QAbstractItemView*>(m_widgets.groupGrid) : m_widgets.groupTable;
    return grid ? static_cast<QAbstractItemView*>(m_widgets.songGrid) : m_widgets.songTable;
}

QAbstractItemView* SongViews::choose(bool groups, bool grid)
{
    m_groupsChosen = groups;
    tellShown();
    return view(groups, grid);
}

QAbstractItemView* SongViews::shownView() const
{
    const auto views = all();
    const auto shown =
        std::find_if(views.begin(), views.end(), [](const QWidget* view) { return !view->isHidden(); });
    return shown == views.end() ? nullptr : *shown;
}

bool SongViews::showsGroups(const QAbstractItemView& view) const
{
    return &view == m_widgets.groupGrid || &view == m_widgets.groupTable;
}

std::array<QAbstractItemView*, 4> SongViews::all() const
{
    return {m_widgets.songGrid, m_widgets.songTable, m_widgets.groupGrid, m_widgets.groupTable};
}

void SongViews::setGroupsEnabled(bool enabled)
{
    m_widgets.groupGrid->setEnabled(enabled);
    m_widgets.groupTable->setEnabled(enabled);
}

void SongViews::setSongsLocked(bool locked)
{
    const auto views = all();
    for (std::size_t i = 0; i < views.size(); ++i)
        if (!showsGroups(*views[i]))
            m_veils[i]->setLocked(locked);
}

void SongViews::repaintCovers()
{
    for (QAbstractItemView* view : all())
        view->viewport()->update();
}
