#include "songviews.h"

#include "dupmusicinfo.h"
#include "dupmusiclistmodel.h"
#include "musiclistmodel.h"
#include "views/covergriddelegate.h"
#include "views/paintdupnumberdelegate.h"
#include "views/songcells.h"
#include "views/viewsetup.h"

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
} // namespace

SongViews::SongViews(const Widgets& widgets, QList<QMusicInfo*>* songs, QList<DupMusicInfo*>* groups,
                     QObject* parent)
    : QObject(parent), m_widgets(widgets), m_allMusicGridModel(new MusicListModel(this)),
      m_allMusicTableModel(new MusicListModel(this)), m_dupMusicGridModel(new DupMusicListModel(this)),
      m_dupMusicTableModel(new DupMusicListModel(this))
{
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
    for (QWidget* view : all())
        view->hide();
}

void SongViews::showSongs(QList<QMusicInfo*>* songs)
{
    m_allMusicGridModel->setDataSourceList(songs, SongCells::columnModeGrid, false);
    m_allMusicTableModel->setDataSourceList(songs, SongCells::columnModeTable, false);
}

void SongViews::showGroups(QList<DupMusicInfo*>* groups, int tableColumns)
{
    m_dupMusicGridModel->setDupMusicDataSource(groups, SongCells::columnModeGrid, false);
    m_dupMusicTableModel->setDupMusicDataSource(groups, tableColumns, false);
}

void SongViews::refreshSongs()
{
    m_allMusicGridModel->refresh();
    m_allMusicTableModel->refresh();
}

void SongViews::refreshGroups()
{
    m_dupMusicGridModel->refresh();
    m_dupMusicTableModel->refresh();
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

void SongViews::selectSong(int row)
{
    m_widgets.songGrid->setCurrentIndex(m_allMusicGridModel->index(row, 0));
    m_widgets.songTable->setCurrentIndex(m_allMusicTableModel->index(row, 0));
}

void SongViews::selectGroup(int row)
{
    m_widgets.groupGrid->setCurrentIndex(m_dupMusicGridModel->index(row, 0));
    m_widgets.groupTable->setCurrentIndex(m_dupMusicTableModel->index(row, 0));
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

void SongViews::repaintCovers()
{
    for (QAbstractItemView* view : all())
        view->viewport()->update();
}
