#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "fixtures.h"
#include "guidriver.h"
#include "mainwindow.h"
#include "navigationwidget.h"
#include "qiorvoutil.h"
#include "startup.h"

#include <QDesktopServices>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QMimeData>
#include <QMovie>
#include <QTemporaryDir>
#include <QtTest>

namespace {
/// Lets a test say that a scan runs.
class ScanningWindow : public MainWindow
{
public:
    using MainWindow::m_bScanning;
};

const char* const iTunesTips =
    "Quickly Clean iTunes Music Library,No Unknown and Duplicate Music Anymore!\n"
    "Click Start Scan button to start tidying your iTunes Music Library immediately.";
const char* const localTips = "Quickly Clean Local Music.No Unknown and Duplicate Music Anymore!\n"
                              "Add music files and start tidying your local music now!";
} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        Startup::beforeApplication();
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }

    Q_INVOKABLE void openUrl(const QUrl& url) { m_opened.append(url); }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void startsInTheITunesMode();
    void theHeaderIsPlacedInTheWindow_data();
    void theHeaderIsPlacedInTheWindow();
    void theTipsFitTheirLine();
    void theTipsTouchNeitherNeighbour();
    void theModeSwitchTakesItsTime();
    void aRunningScanHoldsTheSwitchToTheLocalMode();
    void nothingIsTakenInOnceTheModeIsLeft_data();
    void nothingIsTakenInOnceTheModeIsLeft();
    void theTickOfAScanGoesWithItsMode();
    void withoutPicturesTheHeaderIsPlacedAllTheSame();
    void menusOpenTheirPages();
    void theLocalWorkflowRunsFromEndToEnd();
    void theCentralViewReachesTheNavigation();
    void startScanOpensTheDialogWhileNothingWasAdded();
    void pathsAreTakenInOnceTheLocalModeIsInForce();
    void theLocalModeIsOpenedWithoutPaths();
    void progressShowsInTheHeader();
    void everyButtonHasANameAndCanBeReached();

private:
    template <typename Widget>
    Widget* part(const char* name) const
    {
        return m_window->findChild<Widget*>(name);
    }
    void click(const char* button) const { QTest::mouseClick(part<QImageButton>(button), Qt::LeftButton); }
    QString tips() const { return part<QLabel>("m_tipsLabel")->text(); }
    QString caption(const char* button) const { return part<QImageButton>(button)->btnText(); }
    void switchToLocal() const;
    QString tone(const QString& name, const QString& title) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ScanningWindow> m_window;
    std::unique_ptr<DialogDriver> m_dialogs;
    QList<QUrl> m_opened;
};

void TestMainWindow::initTestCase()
{
    Startup::afterApplication();
    for (const char* scheme : {"https", "file"})
        QDesktopServices::setUrlHandler(scheme, this, "openUrl");
}

void TestMainWindow::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_window = std::make_unique<ScanningWindow>();
    m_dialogs = std::make_unique<DialogDriver>();
    const QString image = QIOrvoUtil::getResourcePath() + "/Image/";
    m_window->setTopImage(image + "bg_banner.png");
    m_window->setFootImage(image + "bg_foot.png");
    m_window->setBackgroundImage(image + "bg_right_nofile.png");
    m_window->setMinimumSize(1000, 700);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get(), patience));
}

void TestMainWindow::cleanup()
{
    m_window.reset();
    m_dialogs.reset();
    QIOrvoUtil::m_cleanMode = false;
    m_local_add_or_ScanAgain = 0;
    m_opened.clear();
}

void TestMainWindow::switchToLocal() const
{
    click("m_btniTunesClean");
    QTRY_VERIFY(part<QWidget>("m_btnLocalClean")->isVisible());
}

QString TestMainWindow::tone(const QString& name, const QString& title) const
{
    const QString path = Fixtures::copyTone("mp3", m_folder->path(), name);
    AudioFile::write(path, {{TAG_TITLE, title}, {TAG_ARTIST, "A"}, {TAG_ALBUM, "B"}, {TAG_GENRE, "Pop"}});
    return path;
}

void TestMainWindow::startsInTheITunesMode()
{
    QCOMPARE(m_window->windowTitle(), QString("Melodrift"));
    QCOMPARE(m_window->size(), QSize(1120, 713));
    QVERIFY(!QIOrvoUtil::m_cleanMode);
    QVERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
    QVERIFY(!part<QWidget>("m_btnLocalClean")->isVisible());
    QCOMPARE(tips(), QString(iTunesTips));
    QCOMPARE(part<QImageButton>("m_btnStarScan")->accessibleName(), QString("Start Scan"));
    QCOMPARE(caption("m_btnMusicAll"), QString("All songs(0)"));
    m_window->resize(200, 200);
    QCOMPARE(m_window->size(), QSize(1000, 700));
}

void TestMainWindow::theHeaderIsPlacedInTheWindow_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("smallest") << QSize(1000, 700);
    QTest::newRow("usual") << QSize(1120, 713);
    QTest::newRow("large") << QSize(1920, 1080);
}

void TestMainWindow::theHeaderIsPlacedInTheWindow()
{
    QFETCH(QSize, size);
    m_window->resize(size);
    m_window->grab();
    const auto place = [this](const char* name) {
        const auto* widget = part<QWidget>(name);
        return QRect(widget->mapTo(m_window.get(), QPoint()), widget->size());
    };
    const int width = size.width();
    QCOMPARE(place("m_btnStarScan").topLeft(), QPoint(width / 2, 30));
    QCOMPARE(place("m_hhwidget").topLeft(), QPoint(width - 419, 5));
    QCOMPARE(place("m_tipsLabel"), QRect(60, 25, 465, 40));
    QCOMPARE(place("m_movieLabel"), QRect(10, 20, 50, 50));
    QVERIFY(place("m_menuBar").bottom() < 20);
    // The start button is whole and on top; nothing reaches into the switch.
    for (const QPoint& corner : {QPoint(10, 22), QPoint(126, 22), QPoint(68, 2), QPoint(68, 41)})
        QCOMPARE(m_window->childAt(place("m_btnStarScan").topLeft() + corner),
                 part<QWidget>("m_btnStarScan"));
    QVERIFY(!place("m_btnStarScan").intersects(place("m_btniTunesClean")));
    QCOMPARE(place("m_leftMusicWidget"), QRect(0, 102, 200, size.height() - 128));
    QCOMPARE(place("m_middleMusicWidget"), QRect(200, 102, width - 200, size.height() - 128));
    QCOMPARE(place("verticalLayoutWidget").width(), 330);
    // Never squeezed; a small window cuts off its blank foot.
    QCOMPARE(place("m_backgroundImageWidget"), QRect(width - 330, 102, 330, 585));
}

void TestMainWindow::theTipsFitTheirLine()
{
    const auto* label = part<QLabel>("m_tipsLabel");
    QCOMPARE(label->font().pointSize(), 12);
    for (const QString& line : (QString(iTunesTips) + '\n' + localTips).split('\n'))
        QVERIFY2(label->fontMetrics().horizontalAdvance(line) <= 465, qPrintable(line));
    QVERIFY(2 * label->fontMetrics().lineSpacing() <= 40);
}

void TestMainWindow::theTipsTouchNeitherNeighbour()
{
    m_window->resize(1000, 700);
    const auto* label = part<QLabel>("m_tipsLabel");
    QVERIFY(label->indent() >= 6);
    const auto verifyEnds = [&] {
        for (const QString& line : tips().split('\n')) {
            const int end = label->x() + label->indent() + label->fontMetrics().horizontalAdvance(line);
            QVERIFY2(end <= part<QWidget>("m_btnStarScan")->x() - 6, qPrintable(line));
        }
    };
    verifyEnds();
    switchToLocal();
    QCOMPARE(tips(), QString(localTips));
    verifyEnds();
}

void TestMainWindow::theModeSwitchTakesItsTime()
{
    QElapsedTimer clock;
    clock.start();
    click("m_btniTunesClean");
    QVERIFY(!part<QWidget>("m_btniTunesClean")->isVisible());
    QVERIFY(!part<QWidget>("m_btnLocalClean")->isVisible());
    const QMovie* movie = part<QLabel>("m_labelClean")->movie();
    QCOMPARE(movie->state(), QMovie::Running);
    // Dense screens get the finer file; the label's box is as large in points.
    const bool dense = m_window->devicePixelRatioF() > 1;
    QCOMPARE(QFileInfo(movie->fileName()).fileName(),
             QString(dense ? "b_local_music_clean1@2x.gif" : "b_local_music_clean1.gif"));
    QCOMPARE(part<QLabel>("m_labelClean")->geometry(), QRect(183, 25, 220, 44));
    QCOMPARE(part<QImageButton>("m_btnStarScan")->accessibleName(), QString("Add files"));
    QVERIFY(!QIOrvoUtil::m_cleanMode);
    QTRY_VERIFY(part<QWidget>("m_btnLocalClean")->isVisible());
    QVERIFY(clock.elapsed() >= 650);
    QVERIFY(QIOrvoUtil::m_cleanMode);
    QCOMPARE(tips(), QString(localTips));
    m_local_add_or_ScanAgain = 1;
    click("m_btnLocalClean");
    QCOMPARE(m_local_add_or_ScanAgain, 0);
    QCOMPARE(part<QImageButton>("m_btnStarScan")->accessibleName(), QString("Start Scan"));
    QTRY_VERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
    QVERIFY(!QIOrvoUtil::m_cleanMode);
    QCOMPARE(tips(), QString(iTunesTips));
}

void TestMainWindow::aRunningScanHoldsTheSwitchToTheLocalMode()
{
    m_window->m_bScanning = true;
    click("m_btniTunesClean");
    QVERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
    m_window->m_bScanning = false;
    switchToLocal();
    // The other direction is not held back.
    m_window->m_bScanning = true;
    click("m_btnLocalClean");
    QVERIFY(!part<QWidget>("m_btnLocalClean")->isVisible());
    QTRY_VERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
}

void TestMainWindow::nothingIsTakenInOnceTheModeIsLeft_data()
{
    QTest::addColumn<QString>("way");
    for (const char* way : {"button", "key", "drop"})
        QTest::newRow(way) << QString(way);
}

/// The switch takes a moment, in which the mode that it leaves is still in force.
void TestMainWindow::nothingIsTakenInOnceTheModeIsLeft()
{
    QFETCH(QString, way);
    const QString path = tone("a", "One");
    switchToLocal();
    auto* center = part<CenterWidget>("m_middleMusicWidget");
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get(), patience));
    bool opened = false;
    m_dialogs->expect([&](QWidget* dialog) { // chooses once the other mode is in force
        opened = true;
        QTRY_VERIFY(!QIOrvoUtil::m_cleanMode);
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(path);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    m_dialogs->expectButton("m_btnType");
    click("m_btnLocalClean");
    if (way == "button") {
        QTest::mouseClick(part<QImageButton>("m_btnOpen"), Qt::LeftButton);
    } else if (way == "key") {
        QTest::keyClick(m_window.get(), Qt::Key_O, Qt::ControlModifier);
    } else {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter({300, 300}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(center, &enter);
        QVERIFY(!enter.isAccepted());
        center->TakeDroppedPaths({path});
    }
    QTRY_VERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
    QVERIFY(!opened);
    QVERIFY(m_dialogs->texts.isEmpty());
    QCOMPARE(part<QListView>("m_allMusicListView")->model()->rowCount(), 0);
    QCOMPARE(caption("m_btnMusicAll"), QString("All songs(0)"));
    QCOMPARE(m_local_add_or_ScanAgain, 0);
    // Back in the local mode files are taken in as before.
    m_dialogs = std::make_unique<DialogDriver>();
    switchToLocal();
    m_dialogs->expectButton("m_btnType");
    center->TakeDroppedPaths({path});
    QCOMPARE(caption("m_btnMusicAll"), QString("All songs(1)"));
}

void TestMainWindow::theTickOfAScanGoesWithItsMode()
{
    const auto status = [this] { return part<QLabel>("m_movieLabel")->grab().toImage(); };
    const QImage atStart = status();
    for (const char* leave : {"m_btniTunesClean", "m_btnLocalClean"}) {
        m_window->SlotScanFinish();
        QVERIFY(status() != atStart);
        const bool local = QIOrvoUtil::m_cleanMode;
        click(leave);
        QTRY_VERIFY(QIOrvoUtil::m_cleanMode != local);
        QCOMPARE(tips(), QString(local ? iTunesTips : localTips));
        QCOMPARE(status(), atStart);
    }
}

void TestMainWindow::withoutPicturesTheHeaderIsPlacedAllTheSame()
{
    MainWindow bare;
    bare.resize(1200, 800);
    bare.grab();
    QCOMPARE(bare.findChild<QWidget*>("m_btnStarScan")->pos(), QPoint(600, 30));
    QCOMPARE(bare.findChild<QWidget*>("m_hhwidget")->pos(), QPoint(1200 - 419, 5));
}

void TestMainWindow::menusOpenTheirPages()
{
    auto* bar = m_window->findChild<QMenuBar*>("m_menuBar");
    QStringList names;
    for (const QAction* menu : bar->actions()) {
        names.append(menu->text());
        QCOMPARE(menu->menu()->actions().size(), 1);
        QCOMPARE(menu->menu()->actions().first()->text(), menu->text());
        QVERIFY(!menu->menu()->actions().first()->icon().isNull());
    }
    QCOMPARE(names, QStringList({"Home", "About", "Help", "Exit"}));
    const auto trigger = [bar](int menu) { bar->actions().at(menu)->menu()->actions().first()->trigger(); };
    trigger(0);
    QCOMPARE(m_opened.last(), QUrl("https://melodrift.example"));
    bool aboutShown = false;
    m_dialogs->expect([&aboutShown](QWidget* dialog) {
        aboutShown = dialog->inherits("IntroduceThisSofeDialog");
        dialog->close();
    });
    trigger(1);
    QVERIFY(aboutShown);
    trigger(2);
    QCOMPARE(m_opened.last(),
             QUrl::fromLocalFile(QIOrvoUtil::getResourcePath() + "/Melodrift for Mac-Orvo/index.html"));
    QVERIFY(QFile::exists(m_opened.last().toLocalFile()));
    trigger(3);
    QVERIFY(!m_window->isVisible());
}

void TestMainWindow::theLocalWorkflowRunsFromEndToEnd()
{
    switchToLocal();
    tone("a", "Same");
    tone("b", "Same");
    tone("c", "");
    m_dialogs->expectButton("m_btnType");
    part<CenterWidget>("m_middleMusicWidget")->TakeDroppedPaths({m_folder->path()});
    QCOMPARE(caption("m_btnMusicAll"), QString("All songs(3)"));
    QCOMPARE(caption("m_btnMusicUndefined"), QString("Undefined songs(1)"));
    QCOMPARE(caption("m_btnMusicDuplicate"), QString("Duplicate songs(1)"));
    QCOMPARE(tips(), QString("Scan Finished!\nScan Results: 1 Undefined Song(s); 1 Duplicate Song(s)."));
    QVERIFY(!part<QWidget>("m_btnMusicAll")->isEnabled());
    QTest::mouseClick(part<QImageButton>("m_btnMusicDuplicate"), Qt::LeftButton);
    QVERIFY(part<QWidget>("m_dupMusicListView")->isVisible());
    QTest::mouseClick(part<QImageButton>("m_btnMusicUndefined"), Qt::LeftButton);
    QVERIFY(part<QWidget>("m_allMusicListView")->isVisible());
    QCOMPARE(part<QListView>("m_allMusicListView")->model()->rowCount(), 1);
    auto* list = part<QListView>("m_allMusicListView");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                      list->visualRect(list->model()->index(0, 0)).center());
    QVERIFY(part<QWidget>("m_musicDetailedWidget")->isVisible());
    QTest::mouseClick(part<QImageButton>("m_btnMusicAll"), Qt::LeftButton);
    QVERIFY(part<QWidget>("m_musicDetailedWidget")->isHidden());
    QCOMPARE(list->model()->rowCount(), 3);
    // Once files were added the button scans them.
    QCOMPARE(part<QImageButton>("m_btnStarScan")->accessibleName(), QString("Start Scan"));
    click("m_btnStarScan");
    QVERIFY(!part<QWidget>("m_btnMusicAll")->isEnabled());
    QCOMPARE(caption("m_btnMusicAll"), QString("All songs(3)"));
    // Leaving the mode empties the counts.
    click("m_btnLocalClean");
    QTRY_COMPARE(caption("m_btnMusicAll"), QString("All songs(0)"));
}

void TestMainWindow::theCentralViewReachesTheNavigation()
{
    auto* center = part<CenterWidget>("m_middleMusicWidget");
    const auto enabled = [this] {
        QList<bool> states;
        for (const char* name : {"m_btnMusicAll", "m_btnMusicUndefined", "m_btnMusicDuplicate"})
            states.append(part<QWidget>(name)->isEnabled());
        return states;
    };
    click("m_btnMusicUndefined");
    QCOMPARE(enabled(), QList<bool>({true, false, true}));
    emit center->emitSetNavigViewBtn();
    QCOMPARE(enabled(), QList<bool>({false, true, true}));
    emit center->emitForbidClickNavigBtn(true);
    QCOMPARE(enabled(), QList<bool>({false, false, false}));
    emit center->emitForbidClickNavigBtn(false);
    QCOMPARE(enabled(), QList<bool>({true, true, true}));
}

void TestMainWindow::startScanOpensTheDialogWhileNothingWasAdded()
{
    switchToLocal();
    bool opened = false;
    m_dialogs->expect([&opened](QWidget* dialog) {
        opened = dialog->inherits("QFileDialog");
        dialog->close();
    });
    click("m_btnStarScan");
    QVERIFY(opened);
}

void TestMainWindow::pathsAreTakenInOnceTheLocalModeIsInForce()
{
    tone("a", "One");
    m_dialogs->expectButton("m_btnType");
    m_window->OpenInLocalMode({m_folder->path()});
    QTRY_COMPARE(caption("m_btnMusicAll"), QString("All songs(1)"));
    QVERIFY(QIOrvoUtil::m_cleanMode);
}

void TestMainWindow::theLocalModeIsOpenedWithoutPaths()
{
    m_window->OpenInLocalMode({});
    QTRY_VERIFY(part<QPushButton>("m_btnLocalClean")->isVisible());
    QVERIFY(QIOrvoUtil::m_cleanMode);
    QCOMPARE(caption("m_btnMusicAll"), QString("All songs(0)"));
}

void TestMainWindow::progressShowsInTheHeader()
{
    switchToLocal();
    const QString before = tips();
    auto* center = part<CenterWidget>("m_middleMusicWidget");
    emit center->emitIntakeProgress(7, 9);
    QCOMPARE(tips(), QString("Adding music files: 7 of 9\nPress Esc to stop."));
    QVERIFY(part<QLabel>("m_movieLabel")->movie());
    emit center->emitIntakeEnded();
    QCOMPARE(tips(), before);
    QVERIFY(!part<QLabel>("m_movieLabel")->movie());
    QVERIFY(!part<QLabel>("m_movieLabel")->pixmap(Qt::ReturnByValue).isNull());
}

void TestMainWindow::everyButtonHasANameAndCanBeReached()
{
    for (const QImageButton* button : m_window->findChildren<QImageButton*>()) {
        QVERIFY2(!button->accessibleName().isEmpty(), qPrintable(button->objectName()));
        QVERIFY2(button->focusPolicy() & Qt::TabFocus, qPrintable(button->objectName()));
    }
    for (const char* name : {"m_btnGridDisplay", "m_btnTableDisplay", "m_btniTunesClean", "m_btnLocalClean"})
        QVERIFY2(!part<QImageButton>(name)->toolTip().isEmpty(), name);
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
