#include "songviews.h"

#include "covergriddelegate.h"
#include "dupmusiclistmodel.h"
#include "musiclistmodel.h"
#include "paintdupnumberdelegate.h"
#include "songcells.h"

#include <QHeaderView>
#include <QListView>
#include <QTableView>

namespace {
constexpr int titleColumnWidth = 500;

void colourTexts(QWidget* view)
{
    QPalette palette = view->palette();
    palette.setColor(QPalette::Text, QColor(0x28, 0x40, 0x4F));
    view->setPalette(palette);
}
} // namespace

void SongViews::initGrid(QListView* view)
{
    view->setViewMode(QListView::IconMode);
    view->setResizeMode(QListView::Adjust);
    view->setIconSize(QSize(100, 120));
    view->setGridSize(QSize(120, 140));
    view->setMovement(QListView::Snap);
    view->setDragDropMode(QAbstractItemView::DragDrop);
    view->setFrameShape(QFrame::NoFrame);
    view->setUniformItemSizes(true);
    view->setFocusPolicy(Qt::NoFocus);
    colourTexts(view);
}

void SongViews::initTable(QTableView* view)
{
    view->setFrameShape(QFrame::NoFrame);
    view->setShowGrid(false);
    view->verticalHeader()->hide();
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->horizontalHeader()->setDefaultSectionSize(130);
    view->horizontalHeader()->setStretchLastSection(true);
    view->horizontalHeader()->setHighlightSections(false);
    view->horizontalHeader()->setStyleSheet(
        QStringLiteral("QHeaderView{background:#EAF4FB}"
                       "QHeaderView::section{background:#EAF4FB;color:#28404F;border:0;"
                       "border-bottom:1px solid #C9DDE9;border-right:1px solid #D9E8F2;padding:5px 6px}"));
    view->verticalHeader()->setDefaultSectionSize(26);
    view->setFocusPolicy(Qt::NoFocus);
    colourTexts(view);
}

SongViews::SongViews(const Widgets& widgets, QList<QMusicInfo*>* songs, QList<DupMusicInfo*>* groups,
                     QObject* parent)
    : QObject(parent), m_widgets(widgets), m_allMusicGridModel(new MusicListModel(this)),
      m_allMusicTableModel(new MusicListModel(this)), m_dupMusicGridModel(new DupMusicListModel(this)),
      m_dupMusicTableModel(new DupMusicListModel(this))
{
    // Before the views, which measure columns that are there.
    showSongs(songs);
    showGroups(groups, SongCells::columnModeDupTable);
    initGrid(m_widgets.songGrid);
    initGrid(m_widgets.groupGrid);
    initTable(m_widgets.songTable);
    initTable(m_widgets.groupTable);
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

QAbstractItemView* SongViews::view(bool groups, bool grid) const
{
    if (groups)
        return grid ? static_cast<QAbstractItemView*>(m_widgets.groupGrid) : m_widgets.groupTable;
    return grid ? static_cast<QAbstractItemView*>(m_widgets.songGrid) : m_widgets.songTable;
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
