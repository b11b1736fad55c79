#include "centerwidget.h"

#include "centerchanges.h"
#include "centerkeys.h"
#include "common/style.h"
#include "emptyviews.h"
#include "intakedialogs.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "showngroup.h"
#include "songviews.h"
#include "ui_centerwidget.h"
#include "viewinsight.h"
#include "views/songcells.h"
#include "views/viewfocus.h"

#include <QPainter>
#include <QShortcut>

#include <utility>

CenterWidget::CenterWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::CenterWidget>()),
      m_deletion(this, SLOT(SlotAllMusicInfoAfterDeleting())),
      m_adding(*this, m_songs.local(), m_songs.localTags(), [this] { return whyNoFiles(); })
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
}

void CenterWidget::Init()
{
    ui->m_btnGridDisplay->setBtnImage(SkinPicture::path("button_preview_left.png"));
    ui->m_btnTableDisplay->setBtnImage(SkinPicture::path("button_preview_right.png"));
    ui->m_btnOpen->setBtnImage(SkinPicture::path("button_open.png"));
    ui->m_btnOpen->hide();
    ui->m_backgroundImageWidget->SetImageBackgroud(SkinPicture::path("bg_right_nofile.png"), true);
    ui->m_musicDetailedWidget->hide();
    ui->m_dupMusicDetailedWidget->clearing().setLists([this] { return m_songs.lists(); });
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
    DuplicateMusicDetailedWidget& rows = *ui->m_dupMusicDetailedWidget;
    MusicDetailedInfoWidget& details = *ui->m_musicDetailedWidget;
    m_views = new SongViews(
        {ui->m_allMusicListView, ui->m_allMusicTableView, ui->m_dupMusicListView, ui->m_dupMusicTableView},
        &m_songs.all(), &m_songs.groups(), this);
    m_shownGroup = std::make_unique<ShownGroup>(rows, *m_views, m_songs.classification());
    // The local mode without a song keeps its drop zone in sight; otherwise the view lies above it.
    m_inSight = std::make_unique<ViewInSight>(
        *m_views,
        ViewInSight::Buttons{*ui->m_btnGridDisplay, *ui->m_btnTableDisplay, *ui->m_btnOpen,
                             ui->m_findStrip->moreButton()},
        [this] { return QIOrvoUtil::m_cleanMode && m_songs.local().isEmpty(); }, this);
    m_empty = new EmptyViews({*m_views, m_songs, *m_inSight}, this);
    m_keys = new CenterKeys({*m_views, *m_shownGroup, details, rows, m_inSight->focus()}, this);
    m_changes = new CenterChanges(
        {m_songs, *m_views, *m_inSight, *m_shownGroup, details, rows, m_deletion, m_foot}, this);
    connect(m_empty, &EmptyViews::libraryChosen, m_changes, &CenterChanges::clearClassification);
    ui->m_findStrip->setViews(*m_views, m_inSight->focus());
}

void CenterWidget::InitConnect()
{
    connect(ui->m_btnGridDisplay, SIGNAL(clicked()), this, SLOT(OnBtnGridView()));
    connect(ui->m_btnTableDisplay, SIGNAL(clicked()), this, SLOT(OnBtnTableView()));
    connect(ui->m_btnOpen, SIGNAL(clicked()), this, SLOT(OnBtnOpenFile()));
    connect(&ui->m_findStrip->moreButton(), SIGNAL(clicked()), this, SLOT(OnBtnOpenFile()));
    m_views->connectSongs(this, SLOT(SlotClickAllMusicIndex(QModelIndex)),
                          SLOT(SlotDoubleClickAllMusicIndex(QModelIndex)));
    m_views->connectGroups(this, SLOT(SlotClickDupMusicIndex(QModelIndex)),
                           SLOT(SlotDoubleClickDupMusicIndex(QModelIndex)));
    connect(m_keys, &CenterKeys::navigationChosen, this, &CenterWidget::emitChooseRow);
    connect(m_keys, &CenterKeys::displaySwitched, this, [this] { m_inSight->showAs(!m_inSight->isGrid()); });
    connect(&m_adding.intake(), SIGNAL(progress(int, int)), this, SIGNAL(emitIntakeProgress(int, int)));
    connect(&m_adding, &FileAdding::ended, this, &CenterWidget::emitIntakeEnded);
    connect(&m_adding, &FileAdding::finished, this, &CenterWidget::emitIntakeFinished);
    connect(&m_adding, &FileAdding::pathsTaken, this, &CenterWidget::emitSetNavigViewBtn);
    connect(&m_adding, &FileAdding::scanWanted, this, &CenterWidget::SlotScanAddedFiles);
    connect(m_changes, &CenterChanges::undefinedCounted, this, &CenterWidget::emitUndefinedMusicCount);
    connect(m_changes, &CenterChanges::groupsCounted, this, &CenterWidget::emitDuplicateMusicCount);
    connect(m_changes, &CenterChanges::counted, this, &CenterWidget::emitMusicCount);
    connectPanels();
    connectFoot();
}

void CenterWidget::connectPanels()
{
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
    connect(ui->m_dupMusicDetailedWidget, &DuplicateMusicDetailedWidget::emitSongsWent, m_changes,
            &CenterChanges::showWhatIsLeft);
    connect(ui->m_dupMusicDetailedWidget, &DuplicateMusicDetailedWidget::emitGroupCleared, m_changes,
            &CenterChanges::groupCleared);
    connect(ui->m_musicDetailedWidget, &MusicDetailedInfoWidget::emitEditedAgain, m_changes,
            &CenterChanges::editedAgain);
}

void CenterWidget::connectFoot()
{
    connect(m_keys, &CenterKeys::told, &m_foot, &CenterFoot::tell);
    connect(&m_adding, &FileAdding::told, &m_foot, &CenterFoot::tell);
    connect(ui->m_musicDetailedWidget, &MusicDetailedInfoWidget::emitTold, this, &CenterWidget::emitTold);
    connect(ui->m_dupMusicDetailedWidget, &DuplicateMusicDetailedWidget::emitTold, this,
            &CenterWidget::emitTold);
    connect(&m_foot, &CenterFoot::told, this, &CenterWidget::emitTold);
    connect(&m_foot, &CenterFoot::undoOffered, this, &CenterWidget::emitUndoOffered);
    connect(&m_foot, &CenterFoot::undoChosen, this, &CenterWidget::SlotUndo);
    connect(&m_foot, &CenterFoot::groupChosen, this, &CenterWidget::showGroup);
}

/// The thread of a deletion has ended its use once the waiting dialog closes, whenever it returns itself.
bool CenterWidget::ListsAreInUse() const
{
    return m_adding.intake().isRunning() || ui->m_dupMusicDetailedWidget->clearing().isDeleting() ||
           m_deletion.isRunning() || m_foot.isTakingBack();
}

QWidget* CenterWidget::viewFocus() const
{
    return &m_inSight->focus();
}

void CenterWidget::ShowWidget()
{
    m_inSight->show(m_inSight->kind());
}

void CenterWidget::OnBtnGridView()
{
    m_inSight->showAs(true);
}

void CenterWidget::OnBtnTableView()
{
    m_inSight->showAs(false);
}

void CenterWidget::slotShowAllmusicView()
{
    m_views->showSongs(&m_songs.all());
    m_inSight->show(ViewInSight::Kind::All);
}

void CenterWidget::slotShowUndefineMusicView()
{
    m_views->showSongs(&m_songs.undefined());
    m_inSight->show(ViewInSight::Kind::Undefined);
}

void CenterWidget::slotShowDuplicateMusicView()
{
    // Oddity 27: the model shows the same seven columns for 6 as for 7.
    m_views->showGroups(&m_songs.groups(), SongCells::columnModeTable);
    m_inSight->show(ViewInSight::Kind::Duplicates);
}

void CenterWidget::showCoversAnew()
{
    m_views->repaintCovers();
}

void CenterWidget::SlotClickAllMusicIndex(const QModelIndex& index)
{
    if (m_bForbidClick) {
        m_changes->markShownSong(); // the view has moved its mark by itself
        return;
    }
    QMusicInfo* const song = SongViews::songOf(index);
    m_views->selectSong(song);
    ui->m_musicDetailedWidget->SetMusicDetailedInfo(song);
}

void CenterWidget::SlotClickDupMusicIndex(const QModelIndex& index)
{
    // Oddity 33: not kept from clicking, unlike the list of songs.
    ui->m_musicDetailedWidget->leave(); // a song of the former group may be edited
    ui->m_musicDetailedWidget->hide();
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

void CenterWidget::SlotForbidToClickView(bool forbid)
{
    m_bForbidClick = forbid;
    m_views->setSongsLocked(forbid);
    emit emitForbidClickNavigBtn(forbid);
}

void CenterWidget::SlotHiddenMusicDetailedWidget()
{
    ui->m_musicDetailedWidget->leave();
    ui->m_musicDetailedWidget->hide();
    ui->m_dupMusicDetailedWidget->hide();
}

void CenterWidget::enterMode(bool local)
{
    setAcceptDrops(local);
    m_inSight->setVisible(!local);
    ui->m_btnOpen->setVisible(local);
    ui->m_btnOpen->setFocusPolicy(Qt::StrongFocus);
    SlotHiddenMusicDetailedWidget();
    ClearSelectedWidget();
    ui->m_findStrip->clear();
    m_openShortcut->setEnabled(local);
    QIOrvoUtil::m_cleanMode = local;
    m_bLeavingMode = false;
    m_empty->update();
    update();
}

void CenterWidget::ClearSelectedWidget()
{
    emit emitTold(FootText()); // the songs that it may be about go
    const QList<QMusicInfo*> songs = std::exchange(m_songs.local(), {});
    m_changes->clearClassification();
    // Neither mode shows the other's songs: whatever was listed before, the emptied list is.
    m_songs.useLocal();
    m_views->showSongs(&m_songs.all());
    m_views->showGroups(&m_songs.groups(), SongCells::columnModeDupTable);
    ui->m_musicDetailedWidget->SetMusicDetailedInfo(nullptr);
    m_songs.closeLocalTags();
    m_adding.intake().reader().forgetCovers();
    qDeleteAll(songs);
    // No panel shows one any more.
    m_foot.forgetChanges();
}

void CenterWidget::setMusicInfoList(QList<QMusicInfo*>* list)
{
    m_changes->clearClassification();
    m_songs.use(*list);
    slotShowAllmusicView();
    m_changes->classify();
    m_changes->logCounts();
}

void CenterWidget::ScanLocalMusic()
{
    m_foot.forgetSteps();
    setLocalMusicInfo();
}

void CenterWidget::setLocalMusicInfo()
{
    m_changes->clearClassification();
    if (m_adding.hasAdded())
        m_songs.useLocal();
    if (m_songs.all().isEmpty()) {
        IntakeDialogs::askForFiles();
        return;
    }
    slotShowAllmusicView();
    m_changes->classifyLocal();
    emit emitFinishScanninglocalMusic();
}

void CenterWidget::SlotMusicInfoHaveBeEdited()
{
    m_changes->edited();
}

void CenterWidget::SlotDeleteMupMusicWasSelected(QMusicInfo* song)
{
    m_changes->remove(song);
}

void CenterWidget::SlotDeleteAllDupMusic()
{
    m_changes->clearAll();
}

void CenterWidget::SlotAllMusicInfoAfterDeleting()
{
    m_changes->allCleared();
}

void CenterWidget::SlotUndo()
{
    if (!ListsAreInUse())
        m_changes->takeBack();
}

void CenterWidget::showGroup(int row)
{
    if (row >= m_songs.groups().size())
        return;
    emit emitChooseDuplicates();
    m_shownGroup->show(row);
    viewFocus()->setFocus(Qt::OtherFocusReason); // what led here is gone
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
    m_inSight->showAnew();
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
    painter.setOpacity(isEnabled() ? 1 : Style::lockedOpacity);
    m_dropZone.paint(painter, size(), ui->m_btnOpen->size());
}

void CenterWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    DropZone::placeButton(*ui->m_btnOpen, size());
    const int top = ui->horizontalLayout_2->geometry().bottom() + 1;
    m_empty->setPlace({0, top, ui->verticalLayoutWidget->x(), height() - top});
}
