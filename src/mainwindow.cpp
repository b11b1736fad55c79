#include "mainwindow.h"

#include "common/focusmark.h"
#include "common/footline.h"
#include "common/messagedialog.h"
#include "common/skinmovie.h"
#include "common/skinpicture.h"
#include "common/workers.h"
#include "headerstatus.h"
#include "homepage.h"
#include "introducethissofedialog.h"
#include "itunes/delmusiclib.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/itunestrackrecord.h"
#include "launcherprogress.h"
#include "mainmenu.h"
#include "navigationwidget.h"
#include "paintcoverimagethread.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songs/footlines.h"
#include "songs/trackcover.h"
#include "ui_mainwindow.h"

#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QPainter>
#include <QTimer>
#include <QUrl>

namespace {
constexpr int headerHeight = 102;
constexpr int footerHeight = 26;
constexpr int switchMilliseconds = 690;
} // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), ui(std::make_unique<Ui::MainWindow>())
{
    ui->setupUi(this);
    ui->m_centralWidget->setLayout(ui->m_layout);
    ui->horizontalLayoutWidget->hide();
    ui->m_layout->setContentsMargins(0, headerHeight, 0, footerHeight);
    setWindowTitle(QStringLiteral("Melodrift"));
    resize(1120, 713);
    Init();
    InitMainMenu();
    InitConnect();
    ui->m_footLine->comeBefore(*ui->m_btnStarScan);
    ui->m_middleMusicWidget->viewFocus()->setFocus();
    launchiTunes();
    setMouseTracking(true);
}

MainWindow::~MainWindow()
{
    delete m_pCoverThread; // before the library that it asks
    closeITunesLibrary();
    ui.reset(); // the views let go of the songs
    delete centralWidget();
    qDeleteAll(m_musicList);
}

void MainWindow::Init()
{
    ui->m_btnStarScan->setBtnImage(SkinPicture::path("btn_startscan.png"));
    ui->m_btniTunesClean->setBtnImage(SkinPicture::path("button_itunes_music_clean.png"));
    ui->m_btnLocalClean->setBtnImage(SkinPicture::path("button_local_music_clean.png"));
    m_pLocalSwitchMovie = std::make_unique<SkinMovie>("b_local_music_clean1.gif");
    m_piTunesSwitchMovie = std::make_unique<SkinMovie>("b_itunes_music_clean1.gif");
    m_piTunesSwitchTimer = new QTimer(this);
    m_pLocalSwitchTimer = new QTimer(this);
    ui->m_btnLocalClean->hide();
    m_status = std::make_unique<HeaderStatus>(
        HeaderStatus::Widgets{*ui->m_movieLabel, *ui->m_tipsLabel, *ui->m_btnStarScan});
    ui->m_leftMusicWidget->setAllSongsCount(0);
    ui->m_leftMusicWidget->OnLeftWidgetBtnState();
    // Where the header's boxes meet in a small window, the start button stays clickable.
    ui->m_btnStarScan->raise();
    setTabOrder(ui->m_btnStarScan, ui->m_btniTunesClean);
    setTabOrder(ui->m_btniTunesClean, ui->m_btnLocalClean);
    placeHeader();
    m_status->showStart(false);
}

void MainWindow::InitMainMenu()
{
    new MainMenu(this);
    new FocusMark(this);
}

void MainWindow::InitConnect()
{
    NavigationWidget* navigation = ui->m_leftMusicWidget;
    CenterWidget* center = ui->m_middleMusicWidget;
    connect(ui->m_btnStarScan, SIGNAL(clicked()), this, SLOT(OnBtnStartScan()));
    connect(ui->m_btniTunesClean, SIGNAL(clicked()), this, SLOT(SlotOnBtniTunesClean()));
    connect(navigation, SIGNAL(emitMusicAll()), center, SLOT(slotShowAllmusicView()));
    connect(navigation, SIGNAL(emitMusicDuplicate()), center, SLOT(slotShowDuplicateMusicView()));
    connect(navigation, SIGNAL(emitMusicUndefined()), center, SLOT(slotShowUndefineMusicView()));
    connect(ui->m_btnLocalClean, SIGNAL(clicked()), this, SLOT(SlotOnBtnLocalClean()));
    connect(center, SIGNAL(emitUndefinedMusicCount(int)), navigation, SLOT(setUndefindSongsCount(int)));
    connect(center, SIGNAL(emitDuplicateMusicCount(int)), navigation, SLOT(setDuplicateSongsCount(int)));
    connect(center, SIGNAL(emitMusicCount(int, int, int)), navigation, SLOT(setMusicCount(int, int, int)));
    connect(navigation, SIGNAL(emitHiddenMusicDetailedWidget()), center,
            SLOT(SlotHiddenMusicDetailedWidget()));
    connect(m_piTunesSwitchTimer, SIGNAL(timeout()), this, SLOT(SlotiTunesBtnMovieStop()));
    connect(m_pLocalSwitchTimer, SIGNAL(timeout()), this, SLOT(SlotLocalBtnMovieStop()));
    connect(center, SIGNAL(emitFinishScanninglocalMusic()), this, SLOT(SlotScanFinish()));
    connect(center, SIGNAL(emitSetNavigViewBtn()), navigation, SLOT(SlotSetBtnState()));
    connect(center, SIGNAL(emitForbidClickNavigBtn(bool)), navigation, SLOT(SlotForbidClickingBtn(bool)));

    connect(center, SIGNAL(emitIntakeProgress(int, int)), this, SLOT(SlotIntakeProgress(int, int)));
    connect(center, SIGNAL(emitIntakeEnded()), this, SLOT(SlotIntakeEnded()));
    connect(center, SIGNAL(emitIntakeFinished()), this, SLOT(SlotIntakeFinished()));
    connect(center, &CenterWidget::emitChooseDuplicates, navigation, &NavigationWidget::OnBtnMusicDuplicate);
    connect(center, &CenterWidget::emitChooseRow, navigation, &NavigationWidget::choose);
    connect(center, &CenterWidget::emitTold, ui->m_footLine, &FootLine::tell);
    connect(center, &CenterWidget::emitUndoOffered, ui->m_footLine, &FootLine::offer);
}

void MainWindow::setTopImage(const QString& path)
{
    m_pTopImage = std::make_unique<SkinPicture>(path);
}

void MainWindow::setFootImage(const QString& path)
{
    m_pFootImage = std::make_unique<SkinPicture>(path);
}

void MainWindow::setBackgroundImage(const QString& path)
{
    m_pBackgroundImage = std::make_unique<SkinPicture>(path);
}

void MainWindow::OnBtnStartScan()
{
    // While the switch glides, the mode that it leaves is still in force.
    if (m_piTunesSwitchTimer->isActive() || m_pLocalSwitchTimer->isActive())
        return;
    if (QIOrvoUtil::m_cleanMode) {
        if (m_local_add_or_ScanAgain == 1)
            ui->m_middleMusicWidget->ScanLocalMusic();
        else if (m_local_add_or_ScanAgain == 0)
            ui->m_middleMusicWidget->OnBtnOpenFile();
    } else {
        scanITunesLibrary();
    }
    ui->m_leftMusicWidget->OnLeftWidgetBtnState();
}

void MainWindow::scanITunesLibrary()
{
    m_status->showScanning();
    ui->m_middleMusicWidget->DragMusicIntoiTunes();
    ui->m_middleMusicWidget->SwitchToiTunesCleanModel();
    ui->m_btnStarScan->setBtnImage(SkinPicture::path("button_Scanning.png"));
    ui->m_btnStarScan->setEnabled(false);
    m_bScanning = true;
    repaint(); // reading the library takes a moment in which nothing is painted

    int count = 0;
    GetMusicInfo(&m_pTrackRecords, &count);
    tellOfReading();
    if (count == 0)
        MessageDialog::notify(QStringLiteral("No file in iTunes Music Library."), "button_ok.png");
    takeTracks(count);
    loadCovers();
    ui->m_middleMusicWidget->setMusicInfoList(&m_musicList);
    ui->m_leftMusicWidget->setAllSongsCount(m_musicList.size());
}

void MainWindow::tellOfReading()
{
    const QString told = FootLines::nothingScanned(iTunesLastReading(), iTunesBrokenLine());
    if (!told.isEmpty())
        ui->m_footLine->tell({told, true, {}});
}

/// Makes a song of every record that is one, in place of the songs of the scan before.
void MainWindow::takeTracks(int count)
{
    qDeleteAll(std::exchange(m_musicList, {}));
    const QString folder = TrackCover::folder();
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i) {
        iTunesTrackRecord* record = m_pTrackRecords + i;
        if (record->skipA || record->skipB)
            continue;
        auto* song = new QMusicInfo;
        m_musicList.append(song);
        song->track = record;
        song->coverPath = TrackCover::pathIn(folder, *record);
    }
}

void MainWindow::loadCovers()
{
    if (!m_pCoverThread) {
        m_pCoverThread = new PaintCoverImageThread(this);
        connect(m_pCoverThread, SIGNAL(emitPaintCoverhadfinished()), this, SLOT(SlotScanFinish()));
    }
    m_pCoverThread->wait(); // the run before may still be returning
    m_pCoverThread->setList(&m_musicList);
    if (!Workers::start(*m_pCoverThread)) // the scan goes on without its covers
        QMetaObject::invokeMethod(this, "SlotScanFinish", Qt::QueuedConnection);
}

void MainWindow::SlotOnBtniTunesClean()
{
    if (m_bScanning)
        return;
    ui->m_middleMusicWidget->PrepareModeSwitch();
    ui->m_btniTunesClean->hide();
    ui->m_btnStarScan->setBtnImage(SkinPicture::path("add_music.png"));
    m_pLocalSwitchMovie->startIn(ui->m_labelClean);
    m_piTunesSwitchTimer->start(switchMilliseconds);
    update();
}

void MainWindow::SlotiTunesBtnMovieStop()
{
    if (postponedByWork(m_piTunesSwitchTimer))
        return;
    ui->m_btnLocalClean->show();
    m_status->showStart(true);
    ui->m_middleMusicWidget->SwitchToLocalCleanModel();
    ui->m_leftMusicWidget->setMusicCount(0, 0, 0);
    m_piTunesSwitchTimer->stop();
    if (!m_pathsToOpen.isEmpty())
        ui->m_middleMusicWidget->TakeNamedPaths(std::exchange(m_pathsToOpen, QStringList()));
}

void MainWindow::SlotOnBtnLocalClean()
{
    // Oddity 35: unlike in the other direction, a running scan does not stand in the way.
    ui->m_middleMusicWidget->PrepareModeSwitch();
    ui->m_btnLocalClean->hide();
    ui->m_btnStarScan->setBtnImage(SkinPicture::path("btn_startscan.png"));
    m_piTunesSwitchMovie->startIn(ui->m_labelClean);
    m_pLocalSwitchTimer->start(switchMilliseconds);
    m_local_add_or_ScanAgain = 0;
    update();
}

void MainWindow::SlotLocalBtnMovieStop()
{
    if (postponedByWork(m_pLocalSwitchTimer))
        return;
    ui->m_btniTunesClean->show();
    m_status->showStart(false);
    ui->m_middleMusicWidget->SwitchToiTunesCleanModel();
    ui->m_leftMusicWidget->setMusicCount(0, 0, 0);
    m_pLocalSwitchTimer->stop();
}

/// A switch empties the lists: while they are in use it waits, its timer fires again.
bool MainWindow::postponedByWork(QTimer* timer) const
{
    if (!ui->m_middleMusicWidget->ListsAreInUse())
        return false;
    timer->start(switchMilliseconds);
    return true;
}

void MainWindow::SlotScanFinish()
{
    m_bScanning = false;
    if (!QIOrvoUtil::m_cleanMode) {
        m_status->endScanning();
        ui->m_btnStarScan->setBtnImage(SkinPicture::path("scan_again.png"));
        ui->m_middleMusicWidget->showCoversAnew();
    }
    ui->m_btnStarScan->setEnabled(true);
    m_status->showScanned(ui->m_middleMusicWidget->ReturnUndefinedMusicCount(),
                          ui->m_middleMusicWidget->ReturnDuplicateMusicCount());
    update();
}

void MainWindow::SlotIntakeProgress(int done, int total)
{
    m_status->showAdding(done, total);
    LauncherProgress::show(done, total);
    m_lockedByIntake.lock({ui->m_middleMusicWidget, ui->m_leftMusicWidget, ui->m_btnStarScan, ui->m_hhwidget,
                           ui->m_footLine, findChild<MainMenu*>()});
}

void MainWindow::SlotIntakeEnded()
{
    m_status->endAdding();
    LauncherProgress::end();
    m_lockedByIntake.unlock();
}

void MainWindow::SlotIntakeFinished()
{
    // From here on the button scans what was added.
    ui->m_btnStarScan->setBtnImage(SkinPicture::path("btn_startscan.png"));
}

void MainWindow::OpenInLocalMode(const QStringList& paths)
{
    m_pathsToOpen = paths;
    SlotOnBtniTunesClean();
}

void MainWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const auto draw = [&painter](const SkinPicture& picture, const QRect& place) {
        painter.drawImage(place, picture.image(painter));
    };
    if (m_pTopImage)
        draw(*m_pTopImage, QRect(0, 0, width(), m_pTopImage->size().height()));
    if (m_pFootImage) {
        const int footHeight = m_pFootImage->size().height();
        draw(*m_pFootImage, QRect(0, height() - footHeight, width(), footHeight));
    }
    if (m_pBackgroundImage)
        draw(*m_pBackgroundImage,
             QRect(width() - 329, headerHeight, 330, height() - headerHeight - footerHeight));
    placeHeader();
}

/// At a painting all stands there already, and this does nothing: what moves then would be painted again.
void MainWindow::placeHeader()
{
    ui->m_btnStarScan->move(width() / 2, 30);
    ui->m_hhwidget->move(width() - 419, 5);
    m_status->place();
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    placeHeader();
    ui->m_footLine->setGeometry(0, height() - footerHeight, width(), footerHeight);
    m_status->fitTips();
}

/// Beside Tab this is asked for when what has the focus is hidden or disabled, as a button that was pressed:
/// then the focus goes to no other button, where the next press of a key would do something else.
bool MainWindow::focusNextPrevChild(bool next)
{
    QWidget* const focus = focusWidget();
    if (!focus || (focus->isEnabled() && focus->isVisible()))
        return QMainWindow::focusNextPrevChild(next);
    ui->m_middleMusicWidget->viewFocus()->setFocus();
    return true;
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    ui->m_middleMusicWidget->StopIntake();
    if (m_pCoverThread)
        m_pCoverThread->requestInterruption();
    QMainWindow::closeEvent(event);
}

void MainWindow::SlotHomeMenu()
{
    if (!QDesktopServices::openUrl(QUrl(homePage())))
        ui->m_footLine->tell({FootLines::noOpener(FootLines::Opened::WebPage), true, {}});
}

void MainWindow::SlotAboutMenu()
{
    IntroduceThisSofeDialog about;
    about.exec();
}

void MainWindow::SlotHelpMenu()
{
    // Oddity 13: this name, on every system.
    const QString page = QStringLiteral("%1").arg(QIOrvoUtil::getResourcePath() +
                                                  QLatin1String("/Melodrift for Mac-Orvo/index.html"));
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(page)))
        ui->m_footLine->tell({FootLines::noOpener(FootLines::Opened::HelpPage), true, {}});
}

void MainWindow::SlotExitMenu()
{
    close();
}
