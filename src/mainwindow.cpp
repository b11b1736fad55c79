#include "mainwindow.h"

#include "common/footline.h"
#include "common/messagedialog.h"
#include "common/skinmovie.h"
#include "common/skinpicture.h"
#include "common/style.h"
#include "common/workers.h"
#include "homepage.h"
#include "introducethissofedialog.h"
#include "itunes/delmusiclib.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/itunestrackrecord.h"
#include "launcherprogress.h"
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
#include <QMenuBar>
#include <QPainter>
#include <QTimer>
#include <QUrl>

namespace {
constexpr int headerHeight = 102;
constexpr int footerHeight = 26;
constexpr int menuHeight = 20;
constexpr int menuWidth = 320;
constexpr int switchMilliseconds = 690;
constexpr int tipsIndent = 6; // off the status disc
constexpr int tipsGap = 6;    // to the start button
constexpr qreal closestLetters = 92;

/// Oddity 12: these blanks, here and below.
QString iTunesTips()
{
    return QStringLiteral("Quickly Clean iTunes Music Library,No Unknown and Duplicate Music Anymore!\n"
                          "Click Start Scan button to start tidying your iTunes Music Library immediately.");
}

QString localTips()
{
    return QStringLiteral("Quickly Clean Local Music.No Unknown and Duplicate Music Anymore!\n"
                          "Add music files and start tidying your local music now!");
}

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
    ui->m_movieLabel->setGeometry(10, 20, 50, 50);
    ui->m_leftMusicWidget->setAllSongsCount(0);
    ui->m_leftMusicWidget->OnLeftWidgetBtnState();
    ui->m_tipsLabel->setIndent(tipsIndent);
    QPalette palette = ui->m_tipsLabel->palette();
    palette.setColor(QPalette::WindowText, Qt::black);
    ui->m_tipsLabel->setPalette(palette);
    // Where the header's boxes meet in a small window, the start button stays clickable.
    ui->m_btnStarScan->raise();
    placeHeader();
    showStart(iTunesTips());
}

void MainWindow::InitMainMenu()
{
    // A bar of the window's own would push the header down; this one lies on the banner. On macOS it is the
    // system's menu bar.
    auto* bar = new QMenuBar(this);
    bar->setObjectName(QStringLiteral("m_menuBar"));
    bar->setStyleSheet(
        QStringLiteral(
            "QMenuBar{background:transparent;border:0}"
            "QMenuBar::item{background:transparent;padding:1px 8px;margin:0;color:%1;border-radius:4px}"
            "QMenuBar::item:selected{background:%2}"
            "QMenuBar::item:pressed{background:%3}")
            .arg(Style::menuText.name(), Style::menuHovered.name(), Style::menuPressed.name()));
    const auto add = [this, bar](const QString& text, const char* icon, const char* slot) {
        QMenu* menu = bar->addMenu(text);
        QAction* action = menu->addAction(SkinPicture::icon(icon), text);
        connect(action, SIGNAL(triggered()), this, slot);
        return action;
    };
    add(QStringLiteral("Home"), "menu_home.png", SLOT(SlotHomeMenu()));
    add(QStringLiteral("About"), "menu_about.png", SLOT(SlotAboutMenu()));
    add(QStringLiteral("Help"), "menu_help.png", SLOT(SlotHelpMenu()))
        ->setShortcut(QKeySequence::HelpContents);
    add(QStringLiteral("Exit"), "menu_exit.png", SLOT(SlotExitMenu()))->setShortcut(QKeySequence::Quit);
    bar->setGeometry(4, 0, menuWidth, menuHeight);
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
    connect(center, SIGNAL(emitIntakeFinished()), this, SLOT(SlotIntakeFinished()));
    connect(center, &CenterWidget::emitChooseDuplicates, navigation, &NavigationWidget::OnBtnMusicDuplicate);
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

void MainWindow::showStatusPicture(const char* name)
{
    m_pStatusPicture = name;
    ui->m_movieLabel->showPicture(SkinPicture::path(name));
}

/// What the header says of a mode in which nothing was scanned yet.
void MainWindow::showStart(const QString& tips)
{
    showStatusPicture("pic_startscan.png");
    showTips(tips);
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
    m_pScanMovie = std::make_unique<SkinMovie>("dynamic_scanning.gif");
    m_pScanMovie->startIn(ui->m_movieLabel);
    ui->m_middleMusicWidget->DragMusicIntoiTunes();
    ui->m_middleMusicWidget->SwitchToiTunesCleanModel();
    ui->m_btnStarScan->setBtnImage(SkinPicture::path("button_Scanning.png"));
    ui->m_btnStarScan->setEnabled(false);
    m_bScanning = true;
    showTips(QStringLiteral("Scanning......\nPlease wait a moment!"));
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
    showStart(localTips());
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
    showStart(iTunesTips());
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
        m_pScanMovie.reset();
        ui->m_btnStarScan->setBtnImage(SkinPicture::path("scan_again.png"));
        ui->m_middleMusicWidget->showCoversAnew();
    }
    ui->m_btnStarScan->setEnabled(true);
    showStatusPicture("pic_scanover.png");
    const int duplicates = ui->m_middleMusicWidget->ReturnDuplicateMusicCount();
    const int undefined = ui->m_middleMusicWidget->ReturnUndefinedMusicCount();
    showTips(QStringLiteral("Scan Finished!\nScan Results: %1 Undefined Song(s); %2 Duplicate Song(s).")
                 .arg(undefined)
                 .arg(duplicates));
    update();
}

void MainWindow::SlotIntakeProgress(int done, int total)
{
    if (!m_pIntakeMovie) {
        m_strTipsBeforeIntake = ui->m_tipsLabel->text();
        m_pIntakeMovie = std::make_unique<SkinMovie>("dynamic_scanning.gif");
        m_pIntakeMovie->startIn(ui->m_movieLabel);
    }
    showTips(QStringLiteral("Adding music files: %1 of %2").arg(done).arg(total));
    LauncherProgress::show(done, total);
}

void MainWindow::SlotIntakeFinished()
{
    if (m_pIntakeMovie) {
        showStatusPicture(m_pStatusPicture);
        showTips(m_strTipsBeforeIntake);
        m_pIntakeMovie.reset();
        LauncherProgress::end();
    }
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
    ui->m_tipsLabel->setGeometry(60, 25, 465, 40);
}

void MainWindow::showTips(const QString& text)
{
    ui->m_tipsLabel->setText(text);
    ui->m_tipsLabel->setFont(tipsFont());
}

/// In a small window the letters stand closer, so that the tips end before the start button.
QFont MainWindow::tipsFont() const
{
    QFont font = Style::font(12);
    const QFontMetricsF metrics(font);
    qreal widest = 0;
    for (const QString& line : ui->m_tipsLabel->text().split(QLatin1Char('\n')))
        widest = qMax(widest, metrics.horizontalAdvance(line));
    const qreal room = ui->m_btnStarScan->x() - tipsGap - ui->m_tipsLabel->x() - tipsIndent;
    if (widest > room)
        font.setLetterSpacing(QFont::PercentageSpacing, qMax(closestLetters, 100 * room / widest));
    return font;
}

void MainWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    placeHeader();
    ui->m_footLine->setGeometry(0, height() - footerHeight, width(), footerHeight);
    ui->m_tipsLabel->setFont(tipsFont());
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
