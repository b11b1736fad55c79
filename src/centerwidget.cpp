#include "centerwidget.h"

#include "audiocore/iaudiotag.h"
#include "common/style.h"
#include "intakedialogs.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "showngroup.h"
#include "songviews.h"
#include "ui_centerwidget.h"
#include "views/songcells.h"

#include <QPainter>
#include <QScrollBar>
#include <QShortcut>

CenterWidget::CenterWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::CenterWidget>()),
      m_deletion(this, SLOT(SlotAllMusicInfoAfterDeleting())),
      m_adding(*this, m_localMusicList, m_tagList, [this] { return whyNoFiles(); })
{
    ui->setupUi(this);
    setLayout(ui->m_layout);
    ui->horizontalLayoutWidget->hide();
    Init();
    InitView();
    InitConnect();
}

CenterWidget::~CenterWidget()
{
    blockSignals(true);
    m_deletion.stop();
    m_views->showSongs(nullptr);
    m_views->showGroups(nullptr, SongCells::columnModeDupTable);
    m_adding.intake().reader().forgetCovers();
    qDeleteAll(m_localMusicList);
}

void CenterWidget::Init()
{
    ui->m_btnGridDisplay->setBtnImage(SkinPicture::path("button_preview_left.png"));
    ui->m_btnTableDisplay->setBtnImage(SkinPicture::path("button_preview_right.png"));
    ui->m_btnOpen->setBtnImage(SkinPicture::path("button_open.png"));
    ui->m_btnGridDisplay->setEnabled(false);
    ui->m_btnOpen->hide();
    ui->m_backgroundImageWidget->SetImageBackgroud(SkinPicture::path("bg_right_nofile.png"), true);
    ui->m_musicDetailedWidget->hide();
    ui->m_dupMusicDetailedWidget->setGroups(&m_classification.groups());
    ui->m_dupMusicDetailedWidget->hide();
    m_openShortcut =
        new QShortcut(QKeySequence::Open, this, SLOT(OnBtnOpenFile()), nullptr, Qt::WindowShortcut);
    m_openShortcut->setEnabled(false);
    // A key that is held does not take everything back.
    (new QShortcut(QKeySequence::Undo, this, SLOT(SlotUndo()), nullptr, Qt::WindowShortcut))
        ->setAutoRepeat(false);
    ui->m_musicDetailedWidget->setHistory(&m_foot.undo().history());
    setAcceptDrops(false);
}

void CenterWidget::InitView()
{
    m_views = new SongViews(
        {ui->m_allMusicListView, ui->m_allMusicTableView, ui->m_dupMusicListView, ui->m_dupMusicTableView},
        m_pAllMusicList, &m_classification.groups(), this);
    m_shownGroup = std::make_unique<ShownGroup>(*ui->m_dupMusicDetailedWidget, *m_views, m_classification);
    m_pCurrentView = ui->m_allMusicListView;
    ui->m_findStrip->setViews(*m_views);
}

void CenterWidget::InitConnect()
{
    connect(ui->m_btnGridDisplay, SIGNAL(clicked()), this, SLOT(OnBtnGridView()));
    connect(ui->m_btnTableDisplay, SIGNAL(clicked()), this, SLOT(OnBtnTableView()));
    connect(ui->m_btnOpen, SIGNAL(clicked()), this, SLOT(OnBtnOpenFile()));
    m_views->connectSongs(this, SLOT(SlotClickAllMusicIndex(QModelIndex)),
                          SLOT(SlotDoubleClickAllMusicIndex(QModelIndex)));
    m_views->connectGroups(this, SLOT(SlotClickDupMusicIndex(QModelIndex)),
                           SLOT(SlotDoubleClickDupMusicIndex(QModelIndex)));
    QWidget* const details = ui->m_musicDetailedWidget;
    QWidget* const groups = ui->m_dupMusicDetailedWidget;
    connect(details, SIGNAL(emitMusicInfoHasChanged()), this, SLOT(SlotMusicInfoHaveBeEdited()));
    connect(details, SIGNAL(emitMusicCoverHasChanged()), this, SLOT(SlotMusicInfoHaveBeEdited()));
    connect(groups, SIGNAL(emitDeleteDupMusicWasSelected(QMusicInfo*)), this,
            SLOT(SlotDeleteMupMusicWasSelected(QMusicInfo*)));
    connect(groups, SIGNAL(emitDeleteAllDupMusic()), this, SLOT(SlotDeleteAllDupMusic()));
    connect(details, SIGNAL(emitForbidToClickView(bool)), this, SLOT(SlotForbidToClickView(bool)));
    connect(this, SIGNAL(emitDuplicateMusicCount(int)), groups, SLOT(SlotSetDeleteBtn(int)));
    connect(this, SIGNAL(emitStartToPlayMusic(QMusicInfo*)), groups,
            SLOT(SlotBeginToPlayTableViewMusic(QMusicInfo*)));
    connect(&m_adding.intake(), SIGNAL(progress(int, int)), this, SIGNAL(emitIntakeProgress(int, int)));
    connect(&m_adding, &FileAdding::finished, this, &CenterWidget::emitIntakeFinished);
    connect(&m_adding, &FileAdding::pathsTaken, this, &CenterWidget::emitSetNavigViewBtn);
    connect(&m_adding, &FileAdding::scanWanted, this, &CenterWidget::SlotScanAddedFiles);
    connect(&m_adding, &FileAdding::told, &m_foot, &CenterFoot::tell);
    connect(&m_foot, &CenterFoot::told, this, &CenterWidget::emitTold);
    connect(&m_foot, &CenterFoot::undoOffered, this, &CenterWidget::emitUndoOffered);
    connect(&m_foot, &CenterFoot::undoChosen, this, &CenterWidget::SlotUndo);
    connect(&m_foot, &CenterFoot::undone, this, &CenterWidget::showAfterUndo);
    connect(&m_foot, &CenterFoot::groupChosen, this, &CenterWidget::showGroup);
    connect(ui->m_musicDetailedWidget, &MusicDetailedInfoWidget::emitTold, this, &CenterWidget::emitTold);
    connect(ui->m_dupMusicDetailedWidget, &DuplicateMusicDetailedWidget::emitTold, this,
            &CenterWidget::emitTold);
    connect(ui->m_dupMusicDetailedWidget, &DuplicateMusicDetailedWidget::emitGroupCleared, this,
            &CenterWidget::SlotGroupCleared);
    connect(ui->m_musicDetailedWidget, &MusicDetailedInfoWidget::emitEditedAgain, this,
            &CenterWidget::SlotEditedAgain);
}

void CenterWidget::switchView()
{
    m_pCurrentView->hide();
    m_pCurrentView = m_views->choose(m_nViewKind == ViewDuplicates, m_bGridMode);
    showCurrentView();
}

/// The local mode without a song keeps its drop zone in sight; otherwise the view lies above it.
void CenterWidget::showCurrentView()
{
    const bool dropZone = QIOrvoUtil::m_cleanMode && m_localMusicList.isEmpty();
    m_pCurrentView->setVisible(!dropZone);
    ui->m_btnOpen->lower();
    ui->m_btnOpen->setFocusPolicy(dropZone ? Qt::StrongFocus : Qt::NoFocus);
}

void CenterWidget::display(bool grid)
{
    m_bGridMode = grid;
    ui->m_btnGridDisplay->setEnabled(!grid);
    ui->m_btnTableDisplay->setEnabled(grid);
    switchView();
}

void CenterWidget::slotShowUndefineMusicView()
{
    m_views->showSongs(&m_classification.undefinedSongs());
    m_nViewKind = ViewUndefined;
    switchView();
}

void CenterWidget::slotShowDuplicateMusicView()
{
    // Oddity 27: the model shows the same seven columns for 6 as for 7.
    m_views->showGroups(&m_classification.groups(), SongCells::columnModeTable);
    m_nViewKind = ViewDuplicates;
    switchView();
}

void CenterWidget::showCoversAnew()
{
    m_views->repaintCovers();
}

void CenterWidget::SlotClickAllMusicIndex(const QModelIndex& index)
{
    if (m_bForbidClick) {
        selectShownSong(); // the view has moved its mark by itself
        return;
    }
    QMusicInfo* const song = SongViews::songOf(index);
    m_nCurrentRow = m_views->selectSong(song);
    ui->m_musicDetailedWidget->SetMusicDetailedInfo(song);
}

void CenterWidget::SlotClickDupMusicIndex(const QModelIndex& index)
{
    // Oddity 33: not kept from clicking, unlike the list of songs.
    m_shownGroup->show(index);
}

void CenterWidget::SlotDoubleClickAllMusicIndex(const QModelIndex& index)
{
    if (QMusicInfo* song = SongViews::songOf(index))
        emit emitStartToPlayMusic(song);
}

void CenterWidget::SlotDoubleClickDupMusicIndex(const QModelIndex& index)
{
    const DupMusicInfo* group = SongViews::groupOf(index);
    if (group && !group->musicList.isEmpty())
        emit emitStartToPlayMusic(group->musicList.first());
}

void CenterWidget::SlotHiddenMusicDetailedWidget()
{
    ui->m_musicDetailedWidget->leave();
    ui->m_musicDetailedWidget->hide();
    ui->m_dupMusicDetailedWidget->hide();
}

void CenterWidget::enterMode(bool local)
{
    m_pCurrentView->setVisible(!local);
    ui->m_btnOpen->setVisible(local);
    ui->m_btnOpen->setFocusPolicy(Qt::StrongFocus);
    SlotHiddenMusicDetailedWidget();
    ClearSelectedWidget();
    ui->m_findStrip->clear();
    setAcceptDrops(local);
    m_openShortcut->setEnabled(local);
    QIOrvoUtil::m_cleanMode = local;
    m_bLeavingMode = false;
    update();
}

void CenterWidget::ClearSelectedWidget()
{
    emit emitTold(FootText()); // the songs that it may be about go
    const QList<QMusicInfo*> songs = std::exchange(m_localMusicList, {});
    clearClassification();
    // Neither mode shows the other's songs: whatever was listed before, the emptied list is.
    m_pAllMusicList = &m_localMusicList;
    m_views->showSongs(m_pAllMusicList);
    m_views->showGroups(&m_classification.groups(), SongCells::columnModeDupTable);
    ui->m_musicDetailedWidget->SetMusicDetailedInfo(nullptr);
    for (IAudioTag* tag : std::exchange(m_tagList, {}))
        if (tag)
            tag->Close();
    m_adding.intake().reader().forgetCovers();
    qDeleteAll(songs);
    // No panel shows one any more.
    m_foot.forgetChanges();
}

void CenterWidget::setMusicInfoList(QList<QMusicInfo*>* list)
{
    clearClassification();
    m_pAllMusicList = list;
    slotShowAllmusicView();
    classify();
    logCounts();
}

void CenterWidget::classify()
{
    m_classification.collect(*m_pAllMusicList);
    emit emitUndefinedMusicCount(m_classification.undefinedSongs().size());
    m_shownGroup->forget();
    m_classification.group();
    m_views->groupsChanged();
    emit emitDuplicateMusicCount(m_classification.groups().size());
}

void CenterWidget::ScanLocalMusic()
{
    m_foot.forgetSteps();
    setLocalMusicInfo();
}

void CenterWidget::setLocalMusicInfo()
{
    clearClassification();
    if (m_adding.hasAdded())
        m_pAllMusicList = &m_localMusicList;
    if (m_pAllMusicList->isEmpty()) {
        IntakeDialogs::askForFiles();
        return;
    }
    slotShowAllmusicView();
    m_classification.collect(*m_pAllMusicList);
    m_classification.group();
    m_views->showGroups(&m_classification.groups(), SongCells::columnModeDupTable);
    logCounts();
    emitCounts();
    emit emitFinishScanninglocalMusic();
}

void CenterWidget::logCounts() const
{
    qInfo("songs: %d, undefined: %d, duplicate groups: %d", m_pAllMusicList->size(),
          m_classification.undefinedSongs().size(), m_classification.groups().size());
}

void CenterWidget::SlotMusicInfoHaveBeEdited()
{
    const int scrolled = m_pCurrentView->verticalScrollBar()->value();
    m_views->forgetTexts();
    m_views->refreshSongs();
    classify();
    if (m_nViewKind == ViewUndefined)
        m_views->showSongs(&m_classification.undefinedSongs());
    selectShownSong();
    m_pCurrentView->verticalScrollBar()->setValue(scrolled);
    m_foot.offerUndo();
}

/// Models that were reset have forgotten it.
void CenterWidget::selectShownSong()
{
    m_nCurrentRow = m_views->selectSong(ui->m_musicDetailedWidget->song());
}

SongLists CenterWidget::songLists()
{
    return {m_pAllMusicList, &m_classification.groups(), &m_classification.undefinedSongs(), &m_tagList};
}

void CenterWidget::SlotEditedAgain()
{
    ui->m_dupMusicDetailedWidget->hide();
    selectShownSong();
}

void CenterWidget::SlotGroupCleared()
{
    m_views->forgetTexts();
    m_views->groupsChanged();
    m_shownGroup->markOrHide();
    m_foot.tellOfDeletion(ui->m_dupMusicDetailedWidget->takeTally(), m_shownGroup->next());
}

void CenterWidget::showGroup(int row)
{
    if (row >= m_classification.groups().size())
        return;
    emit emitChooseDuplicates();
    m_shownGroup->show(row);
}

void CenterWidget::SlotUndo()
{
    if (!ListsAreInUse())
        m_foot.takeBack(songLists(), *window());
}

/// The view in force stays. Of groups the one is shown that songs came back to, else the one shown before.
void CenterWidget::showAfterUndo(const SongUndo::Undone& undone)
{
    const QList<QMusicInfo*> kept = m_shownGroup->keptSongs();
    if (undone.edited && undone.edited == ui->m_musicDetailedWidget->song())
        ui->m_musicDetailedWidget->showAnew();
    SlotMusicInfoHaveBeEdited();
    m_views->refreshGroups();
    showCurrentView();
    emitCounts();
    if (m_nViewKind == ViewDuplicates)
        m_shownGroup->show(undone.returned.isEmpty() ? kept : undone.returned, kept);
}

void CenterWidget::SlotDeleteMupMusicWasSelected(QMusicInfo* song)
{
    DupMusicInfo* const group = m_classification.groups().value(int(m_shownGroup->row()));
    if (const auto removed = SongRemoval::removeOne(songLists(), song, m_shownGroup->row(),
                                                    ui->m_dupMusicDetailedWidget->keptFiles(),
                                                    ui->m_dupMusicDetailedWidget->fileRemoval()))
        m_foot.undo().songsLeft({*removed});
    m_views->leave(song, m_classification.groups().contains(group) ? nullptr : group);
    m_nViewKind = ViewDuplicates;
    switchView();
    m_shownGroup->markAnew();
    emitCounts();
    emit emitDuplicateMusicCount(m_classification.groups().size());
}

void CenterWidget::SlotDeleteAllDupMusic()
{
    m_views->setGroupsEnabled(false);
    if (!m_deletion.run(songLists(), *window()))
        SlotAllMusicInfoAfterDeleting();
}

void CenterWidget::SlotAllMusicInfoAfterDeleting()
{
    m_foot.undo().songsLeft(m_deletion.finish());
    RemovalTally tally = ui->m_dupMusicDetailedWidget->takeTally();
    tally.add(m_deletion.takeTally());
    m_views->setGroupsEnabled(true);
    m_shownGroup->forget();
    m_views->forgetTexts();
    m_views->refreshGroups();
    m_views->refreshSongs();
    emitCounts();
    m_foot.tellOfDeletion(tally);
}

void CenterWidget::emitCounts()
{
    emit emitMusicCount(m_pAllMusicList->size(), m_classification.undefinedSongs().size(),
                        m_classification.groups().size());
}

void CenterWidget::clearClassification()
{
    m_shownGroup->forget();
    m_classification.clear();
    m_views->forgetTexts();
    m_views->groupsChanged();
}

void CenterWidget::slotShowAllmusicView()
{
    m_views->showSongs(m_pAllMusicList);
    m_nViewKind = ViewAll;
    switchView();
}

void CenterWidget::dragEnterEvent(QDragEnterEvent* event)
{
    m_adding.greet(*event);
}

void CenterWidget::dropEvent(QDropEvent* event)
{
    m_adding.receive(*event);
}

/// Files are local songs: of any other mode, and of one that is being left, they are none.
QString CenterWidget::whyNoFiles() const
{
    if (ListsAreInUse())
        return QStringLiteral("the lists are in use");
    return QIOrvoUtil::m_cleanMode && !m_bLeavingMode ? QString()
                                                      : QStringLiteral("the local mode is not in force");
}

void CenterWidget::SlotScanAddedFiles()
{
    showCurrentView();
    ui->m_btnOpen->show();
    setLocalMusicInfo();
}

void CenterWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    // The face of the right column goes on where its pictures end.
    const QRect column = ui->verticalLayoutWidget->geometry();
    painter.fillRect(column, Style::panel);
    painter.fillRect(column.left(), column.top(), 1, column.height(), Style::line);
    if (ui->m_btnOpen->isHidden())
        return;
    DropZone::placeButton(*ui->m_btnOpen, size()); // where it stands already
    m_dropZone.paint(painter, size(), ui->m_btnOpen->size());
}

void CenterWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    DropZone::placeButton(*ui->m_btnOpen, size());
}
