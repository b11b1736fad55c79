#include "centerwidget.h"

#include "audiocore/iaudiotag.h"
#include "common/messagedialog.h"
#include "common/screenplace.h"
#include "common/style.h"
#include "common/workers.h"
#include "deletealldupmusicthread.h"
#include "deletingmusicwaitingdlg.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songviews.h"
#include "ui_centerwidget.h"
#include "views/songcells.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QShortcut>
#include <QTimer>
#include <QUrl>

int m_local_add_or_ScanAgain = 0;

namespace {
constexpr int rightColumnWidth = 330;
constexpr int dropPictureGap = 24;
constexpr unsigned long interruptionMilliseconds = 5;
} // namespace

CenterWidget::CenterWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::CenterWidget>()),
      m_dropPicture(SkinPicture::path("bg_openfile.png"))
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
    endDeletion();
    m_views->showSongs(nullptr);
    m_views->showGroups(nullptr, SongCells::columnModeDupTable);
    m_intake.reader().forgetCovers();
    qDeleteAll(m_localMusicList);
    qDeleteAll(m_removedSongs);
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
    ui->m_dupMusicDetailedWidget->hide();
    m_openShortcut =
        new QShortcut(QKeySequence::Open, this, SLOT(OnBtnOpenFile()), nullptr, Qt::WindowShortcut);
    m_openShortcut->setEnabled(false);
    setAcceptDrops(false);
}

void CenterWidget::InitView()
{
    m_views = new SongViews(
        {ui->m_allMusicListView, ui->m_allMusicTableView, ui->m_dupMusicListView, ui->m_dupMusicTableView},
        m_pAllMusicList, &m_classification.groups(), this);
    m_pCurrentView = ui->m_allMusicListView;
}

void CenterWidget::InitConnect()
{
    connect(ui->m_btnGridDisplay, SIGNAL(clicked()), this, SLOT(OnBtnGridView()));
    connect(ui->m_btnTableDisplay, SIGNAL(clicked()), this, SLOT(OnBtnTableView()));
    connect(ui->m_btnOpen, SIGNAL(clicked()), this, SLOT(OnBtnOpenFile()));
    const char* const clicked = SIGNAL(clicked(QModelIndex));
    const char* const doubleClicked = SIGNAL(doubleClicked(QModelIndex));
    connect(ui->m_allMusicListView, clicked, this, SLOT(SlotClickAllMusicIndex(QModelIndex)));
    connect(ui->m_allMusicTableView, clicked, this, SLOT(SlotClickAllMusicIndex(QModelIndex)));
    connect(ui->m_dupMusicListView, clicked, this, SLOT(SlotClickDupMusicIndex(QModelIndex)));
    connect(ui->m_dupMusicTableView, clicked, this, SLOT(SlotClickDupMusicIndex(QModelIndex)));
    connect(ui->m_allMusicListView, doubleClicked, this, SLOT(SlotDoubleClickAllMusicIndex(QModelIndex)));
    connect(ui->m_allMusicTableView, doubleClicked, this, SLOT(SlotDoubleClickAllMusicIndex(QModelIndex)));
    connect(ui->m_dupMusicListView, doubleClicked, this, SLOT(SlotDoubleClickDupMusicIndex(QModelIndex)));
    connect(ui->m_dupMusicTableView, doubleClicked, this, SLOT(SlotDoubleClickDupMusicIndex(QModelIndex)));
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

    connect(&m_intake, SIGNAL(progress(int, int)), this, SIGNAL(emitIntakeProgress(int, int)));
}

void CenterWidget::switchView()
{
    if (m_pCurrentView)
        m_pCurrentView->hide();
    m_pCurrentView = m_views->view(m_nViewKind == ViewDuplicates, m_bGridMode);
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

void CenterWidget::OnBtnGridView()
{
    m_bGridMode = true;
    ui->m_btnGridDisplay->setEnabled(false);
    ui->m_btnTableDisplay->setEnabled(true);
    switchView();
}

void CenterWidget::OnBtnTableView()
{
    m_bGridMode = false;
    ui->m_btnTableDisplay->setEnabled(false);
    ui->m_btnGridDisplay->setEnabled(true);
    switchView();
}

void CenterWidget::slotShowAllmusicView()
{
    m_views->showSongs(m_pAllMusicList);
    m_nViewKind = ViewAll;
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
    m_views->refreshGroups();
    m_nViewKind = ViewDuplicates;
    switchView();
}

void CenterWidget::ShowWidget()
{
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
    selectSong(index.row());
    ui->m_musicDetailedWidget->SetMusicDetailedInfo(SongViews::songOf(index));
}

void CenterWidget::SlotClickDupMusicIndex(const QModelIndex& index)
{
    // Oddity 33: not kept from clicking, unlike the list of songs.
    m_nCurrentDupRow = index.row();
    m_views->selectGroup(index.row());
    if (DupMusicInfo* group = SongViews::groupOf(index))
        ui->m_dupMusicDetailedWidget->SetDuplicateMusicDetailedInfo(&group->musicList);
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
    emit emitForbidClickNavigBtn(forbid);
}

void CenterWidget::SlotHiddenMusicDetailedWidget()
{
    ui->m_musicDetailedWidget->hide();
    ui->m_dupMusicDetailedWidget->hide();
}

void CenterWidget::SwitchToLocalCleanModel()
{
    enterMode(true);
}

void CenterWidget::SwitchToiTunesCleanModel()
{
    enterMode(false);
}

void CenterWidget::enterMode(bool local)
{
    if (m_pCurrentView)
        m_pCurrentView->setVisible(!local);
    ui->m_btnOpen->setVisible(local);
    ui->m_btnOpen->setFocusPolicy(Qt::StrongFocus);
    SlotHiddenMusicDetailedWidget();
    ClearSelectedWidget();
    setAcceptDrops(local);
    m_openShortcut->setEnabled(local);
    QIOrvoUtil::m_cleanMode = local;
    m_bLeavingMode = false;
    update();
}

void CenterWidget::ClearSelectedWidget()
{
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
    m_intake.reader().forgetCovers();
    qDeleteAll(songs);
    forgetRemovedSongs();
}

void CenterWidget::setMusicInfoList(QList<QMusicInfo*>* list)
{
    clearClassification();
    m_pAllMusicList = list;
    showAllSongs();
    m_classification.collect(*m_pAllMusicList);
    emit emitUndefinedMusicCount(m_classification.undefinedSongs().size());
    m_classification.group();
    emit emitDuplicateMusicCount(m_classification.groups().size());
}

void CenterWidget::setLocalMusicInfo()
{
    clearClassification();
    if (m_bFilesAdded)
        m_pAllMusicList = &m_localMusicList;
    if (m_pAllMusicList->isEmpty()) {
        // Oddity 12: these blanks, here and in other messages.
        MessageDialog::notify(QStringLiteral("Sorry,Please add file from local."), "button_ok.png");
        return;
    }
    showAllSongs();
    m_classification.collect(*m_pAllMusicList);
    m_classification.group();
    m_views->showGroups(&m_classification.groups(), SongCells::columnModeDupTable);
    qInfo("songs: %d, undefined: %d, duplicate groups: %d", m_pAllMusicList->size(),
          m_classification.undefinedSongs().size(), m_classification.groups().size());
    emitCounts();
    emit emitFinishScanninglocalMusic();
}

void CenterWidget::SlotMusicInfoHaveBeEdited()
{
    const int scrolled = m_pCurrentView->verticalScrollBar()->value();
    m_views->refreshSongs();
    m_classification.collect(*m_pAllMusicList);
    emit emitUndefinedMusicCount(m_classification.undefinedSongs().size());
    forgetShownGroup();
    m_classification.group();
    emit emitDuplicateMusicCount(m_classification.groups().size());
    if (m_nViewKind == ViewUndefined)
        m_views->showSongs(&m_classification.undefinedSongs());
    selectShownSong();
    m_pCurrentView->verticalScrollBar()->setValue(scrolled);
}

/// Models that were reset have forgotten it.
void CenterWidget::selectShownSong()
{
    const QList<QMusicInfo*>& songs =
        m_nViewKind == ViewUndefined ? m_classification.undefinedSongs() : *m_pAllMusicList;
    const int row = songs.indexOf(ui->m_musicDetailedWidget->song());
    if (row >= 0)
        selectSong(row);
}

/// Models that were reset have forgotten it; a group that fell to one song is none any more.
void CenterWidget::selectShownGroup()
{
    const DupMusicInfo* group = m_classification.groups().value(int(m_nCurrentDupRow));
    if (group && ui->m_dupMusicDetailedWidget->shows(group->musicList))
        m_views->selectGroup(int(m_nCurrentDupRow));
}

void CenterWidget::selectSong(int row)
{
    m_nCurrentRow = row;
    m_views->selectSong(row);
}

SongLists CenterWidget::songLists()
{
    return {m_pAllMusicList, &m_classification.groups(), &m_classification.undefinedSongs(), &m_tagList};
}

void CenterWidget::SlotDeleteMupMusicWasSelected(QMusicInfo* song)
{
    const DuplicateMusicDetailedWidget& panel = *ui->m_dupMusicDetailedWidget;
    if (SongRemoval::removeOne(songLists(), song, m_nCurrentDupRow, panel.keptFiles()))
        m_removedSongs.append(song);
    m_views->refreshSongs();
    slotShowDuplicateMusicView();
    selectShownGroup();
    emitCounts();
    emit emitDuplicateMusicCount(m_classification.groups().size());
}

void CenterWidget::SlotDeleteAllDupMusic()
{
    m_views->setGroupsEnabled(false);
    if (!m_pDeleteThread) {
        m_pDeleteThread = std::make_unique<DeleteAllDupMusicThread>();
        connect(m_pDeleteThread.get(), SIGNAL(emitAllMusicInfo()), this,
                SLOT(SlotAllMusicInfoAfterDeleting()), Qt::BlockingQueuedConnection);
    }
    m_pDeleteThread->wait(); // the run before may still be returning
    m_pWaitingDlg = std::make_unique<DeletingMusicWaitingDlg>();
    connect(m_pDeleteThread.get(), SIGNAL(emitProgress(int, int)), m_pWaitingDlg.get(),
            SLOT(showProgress(int, int)));
    const SongLists lists = songLists();
    m_pDeleteThread->GetDupMusicBeDelete(lists.all, lists.groups, lists.undefined, lists.tags);
    m_bDeleting = true;
    if (!Workers::start(*m_pDeleteThread)) {
        SlotAllMusicInfoAfterDeleting();
        return;
    }
    ScreenPlace::putOver(*m_pWaitingDlg, m_pWaitingDlg->card(), *window());
    m_pWaitingDlg->exec();
}

/// The thread ends after the file at hand, and by way of this thread, which it blocks on.
void CenterWidget::endDeletion()
{
    if (!m_pDeleteThread)
        return;
    blockSignals(true);
    m_pDeleteThread->requestInterruption();
    while (!m_pDeleteThread->wait(interruptionMilliseconds)) {
        QCoreApplication::sendPostedEvents(m_pDeleteThread.get(), QEvent::MetaCall);
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    }
}

void CenterWidget::SlotAllMusicInfoAfterDeleting()
{
    m_bDeleting = false;
    m_pWaitingDlg->finish();
    m_views->setGroupsEnabled(true);
    m_removedSongs += m_pDeleteThread->takeRemovedSongs();
    forgetShownGroup();
    m_views->refreshGroups();
    m_views->refreshSongs();
    emitCounts();
}

void CenterWidget::emitCounts()
{
    emit emitMusicCount(m_pAllMusicList->size(), m_classification.undefinedSongs().size(),
                        m_classification.groups().size());
}

/// No panel shows one any more.
void CenterWidget::forgetRemovedSongs()
{
    qDeleteAll(std::exchange(m_removedSongs, {}));
}

int CenterWidget::ReturnUndefinedMusicCount() const
{
    return m_classification.undefinedSongs().size();
}

int CenterWidget::ReturnDuplicateMusicCount() const
{
    return m_classification.groups().size();
}

void CenterWidget::clearClassification()
{
    forgetShownGroup();
    m_classification.clear();
}

/// Groups are about to go: the panel shows none of them any more.
void CenterWidget::forgetShownGroup()
{
    ui->m_dupMusicDetailedWidget->hide();
    ui->m_dupMusicDetailedWidget->SetDuplicateMusicDetailedInfo(nullptr);
}

void CenterWidget::showAllSongs()
{
    m_views->showSongs(m_pAllMusicList);
    m_nViewKind = ViewAll;
    switchView();
}

void CenterWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (!takesFiles()) {
        event->ignore();
        return;
    }
    event->accept();
    if (event->mimeData()->hasFormat(QStringLiteral("text/uri-list")))
        event->acceptProposedAction();
}

void CenterWidget::dropEvent(QDropEvent* event)
{
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        paths.append(url.toLocalFile());
    if (paths.isEmpty() || !takesFiles())
        return;
    event->acceptProposedAction();
    // The source of the drag waits for this handler: it is let go before the long work starts.
    QTimer::singleShot(0, this, [this, paths] { TakeDroppedPaths(paths); });
}

void CenterWidget::TakeDroppedPaths(const QStringList& paths)
{
    if (!takesFiles()) {
        qWarning("%d dropped paths are not added: %s", paths.size(),
                 ListsAreInUse() ? "the lists are in use" : "the local mode is not in force");
        return;
    }
    m_dropFileList.clear();
    for (const QString& path : paths)
        DragMusicIntoLocalToAddFile(path);
    m_bFromDrop = true;
    OnBtnOpenFile();
    emit emitSetNavigViewBtn();
}

void CenterWidget::DragMusicIntoLocalToAddFile(const QString& path)
{
    m_dropFileList += m_intake.collect(path, m_dropFileList.size());
}

void CenterWidget::OnBtnOpenFile()
{
    const bool fromDrop = std::exchange(m_bFromDrop, false);
    if (!takesFiles())
        return;
    if (fromDrop && m_dropFileList.isEmpty()) {
        offerFileDialog();
        return;
    }
    const QStringList files = fromDrop ? m_dropFileList : chosenFiles();
    if (!files.isEmpty())
        addFiles(files);
}

/// Files are local songs: of any other mode, and of one that is being left, they are none.
bool CenterWidget::takesFiles() const
{
    return QIOrvoUtil::m_cleanMode && !m_bLeavingMode && !ListsAreInUse();
}

/// What the user chooses; nothing where the mode went meanwhile.
QStringList CenterWidget::chosenFiles()
{
    QStringList files = QFileDialog::getOpenFileNames(
        this, QStringLiteral("open"), QString(),
        QStringLiteral("music files(*.mp3 *.m4a *.ape *.aac *.flac *.wma *.wav *.ogg)"));
    if (files.isEmpty() || takesFiles())
        return files;
    qWarning("%d chosen files are not added: the local mode is left", files.size());
    return {};
}

void CenterWidget::offerFileDialog()
{
    if (m_intake.isStopped())
        return;
    if (MessageDialog::notify(QStringLiteral("Add file(s) failed! Please add music files again."),
                              "button_addmusic.png", false))
        OnBtnOpenFile();
}

void CenterWidget::addFiles(const QStringList& files)
{
    m_bFilesAdded = true;
    m_local_add_or_ScanAgain = 1;
    m_intake.add(files, m_localMusicList, m_tagList);
    emit emitIntakeFinished();
    if (m_intake.isStopped())
        return;
    const bool confirmed = MessageDialog::notify(
        QStringLiteral("Add file(s) successfully! \nClick Start Scan to clean up right away!"),
        "btn_msg_startscan.png");
    if (!confirmed || !takesFiles())
        return;
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
    placeOpenButton(); // where it stands already
    const QSize picture = m_dropPicture.size();
    const QPoint corner((width() - rightColumnWidth - picture.width()) / 2,
                        ui->m_btnOpen->y() - picture.height() - dropPictureGap);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(corner, m_dropPicture.image(painter));
}

void CenterWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    placeOpenButton();
}

void CenterWidget::placeOpenButton()
{
    ui->m_btnOpen->move((width() - ui->m_btnOpen->width() - rightColumnWidth) / 2, height() - 250);
}
