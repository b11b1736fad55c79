#include "audiofile.h"
#include "common/qimagebutton.h"
#include "common/qsliderctrl.h"
#include "common/retractlabel.h"
#include "common/screenplace.h"
#include "fixtures.h"
#include "playsongwidget.h"
#include "sanitized.h"
#include "songfixtures.h"
#include "startup.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <QUrl>
#include <QWindow>

#include <ctime>

class TestPlaySongWidget : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        qputenv("MELODRIFT_AUDIO_OUTPUT", "null");
        Startup::beforeApplication();
    }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void looksAsItShould();
    void showsALocalSong();
    void showsAnITunesTrack();
    void playsAndPauses();
    void playsAnITunesLocation();
    void spacePlaysAndPauses();
    void aSeekGoesToTheFractionOfTheSong();
    void theEndOffersToPlayAgain();
    void onlyDuplicateRowsAreTold();
    void closingPauses();
    void beforeTheFirstSongNothingHappens();
    void aFileThatCannotBePlayedIsQuiet_data();
    void aFileThatCannotBePlayedIsQuiet();
    void everySongBringsATimerOfItsOwn();
    void manyTimersCostLittle();
    void playingCostsLittle();
    void opensBesideAndStaysWhereItWasLeft();
    void opensWithItsFrameOnTheScreen_data();
    void opensWithItsFrameOnTheScreen();
    void comesBackWhenItsScreenIsGone();
    void aFrameThatComesLateIsKeptOnTheScreen();
    void windowsAreGraspedAtTheirUpperEdge_data();
    void windowsAreGraspedAtTheirUpperEdge();
    void windowsGoBesideOthers_data();
    void windowsGoBesideOthers();
    void doesNotKeepTheProgramRunning();

private:
    template <typename T>
    T* child(const char* name) const
    {
        return m_window->findChild<T*>(name);
    }
    QString text(const char* label) const
    {
        if (const auto* retracting = child<RetractLabel>(label))
            return retracting->getName();
        return child<QLabel>(label)->text();
    }
    bool playing() const { return child<QImageButton>("m_btnPause")->isVisible(); }
    float heldValue() const;
    std::unique_ptr<Fixtures::Song> songOf(int milliseconds, const char* kind = "wav");

    QTemporaryDir m_folder;
    std::unique_ptr<Fixtures::ModeGuard> m_mode;
    std::unique_ptr<PlaySongWidget> m_window;
};

void TestPlaySongWidget::initTestCase()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

void TestPlaySongWidget::init()
{
    m_mode = std::make_unique<Fixtures::ModeGuard>(true);
    m_window = std::make_unique<PlaySongWidget>();
}

void TestPlaySongWidget::cleanup()
{
    m_window.reset();
    m_mode.reset();
}

std::unique_ptr<Fixtures::Song> TestPlaySongWidget::songOf(int milliseconds, const char* kind)
{
    auto song = Fixtures::makeSong(true);
    LocalMusicInfo& local = *song->info.localInfo;
    local.filePath = Fixtures::tone(kind, milliseconds);
    local.duration = AudioFile::properties(local.filePath).duration;
    local.bitrate = 320999;
    local.sampleRate = 44100;
    local.format = QStringLiteral("WAV");
    return song;
}

void TestPlaySongWidget::looksAsItShould()
{
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Melodrift"));
    QVERIFY(m_window->testAttribute(Qt::WA_TranslucentBackground));
    QVERIFY(m_window->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(m_window->isWindow());
    QCOMPARE(m_window->size(), QSize(560, 350));
    QCOMPARE(child<QImageButton>("m_btnPause")->pos(), QPoint(20, 315));
    QCOMPARE(child<QImageButton>("m_btnPlay")->pos(), QPoint(20, 315));
    QVERIFY(child<QImageButton>("m_btnPlay")->isHidden());
    QCOMPARE(child<qSliderCtrl>("m_musicPlaySlider")->geometry(), QRect(40, 310, 460, 20));
    QCOMPARE(child<QLabel>("m_labelShowTime")->pos(), QPoint(500, 310));
    QStringList captions;
    for (const char* name : {"label", "label_3", "label_5", "label_7", "label_9", "label_11"}) {
        const auto* caption = child<QLabel>(name);
        captions.append(caption->text());
        QVERIFY2(caption->sizeHint().width() <= caption->width(), name);
    }
    QCOMPARE(captions, QStringList({"Title:", "Kind:", "Size:", "Bitrate:", "Smaple Rate:", "Time:"}));
}

void TestPlaySongWidget::showsALocalSong()
{
    const auto song = songOf(2000);
    song->info.localInfo->duration = 125000;
    m_window->SetMusicPlayInfo(&song->info, true);
    QCOMPARE(text("m_labelName"), QStringLiteral("Artist"));
    QCOMPARE(text("m_labelTitle"), QString::fromUtf8("Täxt"));
    QCOMPARE(text("m_labelKind"), QStringLiteral("WAV"));
    const double kilobytes = double(QFileInfo(song->info.localInfo->filePath).size()) / 1024;
    QCOMPARE(text("m_labelSize"), QString::asprintf("%.2fKB", kilobytes));
    QCOMPARE(text("m_labelBitrate"), QStringLiteral("320Kbps"));
    QCOMPARE(text("m_labelSmaple"), QStringLiteral("44KHZ"));
    QCOMPARE(text("m_labelTime"), QStringLiteral("02::05"));
}

void TestPlaySongWidget::showsAnITunesTrack()
{
    const Fixtures::ModeGuard mode(false);
    const auto song = Fixtures::makeSong(false);
    song->record.kind = "MPEG audio file";
    song->record.size = 5 * 1024 * 1024 + 1;
    song->record.bitRate = 256;
    song->record.sampleRate = 48000;
    song->record.duration = 3600000;
    m_window->SetMusicPlayInfo(&song->info, false);
    QCOMPARE(text("m_labelKind"), QStringLiteral("MPEG audio file"));
    QCOMPARE(text("m_labelSize"), QStringLiteral("5.00MB"));
    QCOMPARE(text("m_labelBitrate"), QStringLiteral("256Kbps"));
    QCOMPARE(text("m_labelSmaple"), QStringLiteral("48KHZ"));
    QCOMPARE(text("m_labelTime"), QString()); // an hour has no text
}

/// Where the slider is once it stands: what is on its way to the sound device still counts.
float TestPlaySongWidget::heldValue() const
{
    const auto* slider = child<qSliderCtrl>("m_musicPlaySlider");
    float held = 0;
    const bool stands = QTest::qWaitFor(
        [&] {
            m_window->UpdatePlayTime();
            held = slider->getValue();
            QTest::qWait(200);
            m_window->UpdatePlayTime();
            return slider->getValue() == held;
        },
        patience);
    return stands ? held : -1;
}

void TestPlaySongWidget::playsAndPauses()
{
    const auto song = songOf(200000);
    m_window->show();
    m_window->SetMusicPlayInfo(&song->info, true);
    QVERIFY(playing());
    QTRY_VERIFY(text("m_labelShowTime") >= QStringLiteral("00::01"));
    QTest::mouseClick(child<QImageButton>("m_btnPause"), Qt::LeftButton);
    QVERIFY(!playing());
    const float held = heldValue();
    QVERIFY(held > 0);
    QTest::qWait(200); // nothing moves on, and that takes time to see
    QCOMPARE(child<qSliderCtrl>("m_musicPlaySlider")->getValue(), held);
    QTest::mouseClick(child<QImageButton>("m_btnPlay"), Qt::LeftButton);
    QVERIFY(playing());
    QTRY_VERIFY(child<qSliderCtrl>("m_musicPlaySlider")->getValue() > held);
}

void TestPlaySongWidget::playsAnITunesLocation()
{
    const Fixtures::ModeGuard mode(false);
    const QString path = m_folder.filePath(QString::fromUtf8("a song, 100% née.wav"));
    QVERIFY(QFile::copy(Fixtures::tone("wav", 60000), path));
    const QByteArray location = "file://localhost" + QUrl::toPercentEncoding(path, "/");
    const auto song = Fixtures::makeSong(false);
    song->record.location = location.constData();
    song->record.duration = 60000;
    m_window->show();
    m_window->SetMusicPlayInfo(&song->info, false);
    QTRY_VERIFY(text("m_labelShowTime") >= QStringLiteral("00::01"));
}

void TestPlaySongWidget::spacePlaysAndPauses()
{
    const auto song = songOf(6000);
    m_window->show();
    m_window->SetMusicPlayInfo(&song->info, true);
    QTest::keyClick(m_window.get(), Qt::Key_Space);
    QVERIFY(!playing());
    QTest::keyClick(m_window.get(), Qt::Key_Space);
    QVERIFY(playing());
    QTest::mouseClick(child<QImageButton>("m_btnPause"), Qt::LeftButton);
    QTest::keyClick(m_window.get(), Qt::Key_Space); // not swallowed by the button clicked before
    QVERIFY(playing());
    QTest::keyClick(m_window.get(), Qt::Key_A);
    QVERIFY(playing());
}

void TestPlaySongWidget::aSeekGoesToTheFractionOfTheSong()
{
    const auto song = songOf(200000);
    QCOMPARE(song->info.localInfo->duration, qint64(200000));
    m_window->show();
    m_window->SetMusicPlayInfo(&song->info, true);
    m_window->SlotOnBtnPause();
    auto* slider = child<qSliderCtrl>("m_musicPlaySlider");
    QTest::mousePress(slider, Qt::LeftButton, Qt::NoModifier, QPoint(230, 10));
    QTest::mouseRelease(slider, Qt::LeftButton, Qt::NoModifier, QPoint(230, 10));
    QCOMPARE(text("m_labelShowTime"), QStringLiteral("01::40"));
    QCOMPARE(slider->getValue(), 5000.0f);
    QTRY_COMPARE(text("m_labelShowTime"), QStringLiteral("01::40"));
    m_window->SlotSetMusicPlayProgressValue(0);
    QCOMPARE(text("m_labelShowTime"), QStringLiteral("00::00"));
}

void TestPlaySongWidget::theEndOffersToPlayAgain()
{
    const auto song = songOf(1000);
    m_window->show();
    QSignalSpy stopped(m_window.get(), SIGNAL(emitSongStopBtnHidden()));
    m_window->SetMusicPlayInfo(&song->info, true);
    QTRY_COMPARE(stopped.size(), 1);
    QVERIFY(!playing());
    QCOMPARE(text("m_labelShowTime"), QStringLiteral("00::00"));
    QCOMPARE(child<qSliderCtrl>("m_musicPlaySlider")->getValue(), 0.0f);
    QSignalSpy started(m_window.get(), SIGNAL(emitSongPlayBtnHidden()));
    QTest::mouseClick(child<QImageButton>("m_btnPlay"), Qt::LeftButton);
    QCOMPARE(started.size(), 1);
    QTRY_COMPARE(stopped.size(), 2); // played once more, to its end
}

void TestPlaySongWidget::onlyDuplicateRowsAreTold()
{
    const auto song = songOf(1000);
    QSignalSpy stopped(m_window.get(), SIGNAL(emitSongStopBtnHidden()));
    QSignalSpy started(m_window.get(), SIGNAL(emitSongPlayBtnHidden()));
    m_window->show();
    m_window->SetMusicPlayInfo(&song->info, false);
    m_window->SlotOnBtnPause();
    m_window->SlotOnBtnPlay();
    m_window->MusicDidfinish();
    m_window->close();
    QCOMPARE(stopped.size() + started.size(), 0);
    m_window->SetMusicPlayInfo(&song->info, true);
    QCOMPARE(stopped.size() + started.size(), 0); // whoever started it knows
    m_window->SlotOnBtnPause();
    m_window->SlotOnBtnPlay();
    QCOMPARE(stopped.size(), 1);
    QCOMPARE(started.size(), 1);
}

void TestPlaySongWidget::closingPauses()
{
    const auto song = songOf(200000);
    QSignalSpy stopped(m_window.get(), SIGNAL(emitSongStopBtnHidden()));
    m_window->show();
    m_window->SetMusicPlayInfo(&song->info, true);
    m_window->close();
    QCOMPARE(stopped.size(), 1);
    m_window->show();
    QVERIFY(!playing());
    const float held = heldValue();
    QTest::qWait(150); // nothing resumes by itself
    QCOMPARE(child<qSliderCtrl>("m_musicPlaySlider")->getValue(), held);
    QTest::mouseClick(child<QImageButton>("m_btnPlay"), Qt::LeftButton);
    QTRY_VERIFY(child<qSliderCtrl>("m_musicPlaySlider")->getValue() > held);
}

void TestPlaySongWidget::beforeTheFirstSongNothingHappens()
{
    m_window->show();
    m_window->UpdatePlayTime();
    m_window->SlotSetMusicPlayProgressValue(0.5);
    m_window->PlayMusic();
    m_window->PauseMusic();
    m_window->MusicDidfinish();
    m_window->close();
    QVERIFY(!m_window->isVisible());
}

void TestPlaySongWidget::aFileThatCannotBePlayedIsQuiet_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << m_folder.filePath("missing.mp3");
    QTest::newRow("garbage") << Fixtures::saveBytes("garbage", m_folder.filePath("garbage.mp3"));
    QTest::newRow("empty") << Fixtures::saveBytes("", m_folder.filePath("empty.mp3"));
    QTest::newRow("directory") << m_folder.path();
    QTest::newRow("long name") << m_folder.filePath(QString(5000, QLatin1Char('x')));
}

void TestPlaySongWidget::aFileThatCannotBePlayedIsQuiet()
{
    QFETCH(QString, path);
    const auto song = songOf(1000);
    song->info.localInfo->filePath = path;
    m_window->show();
    m_window->SetMusicPlayInfo(&song->info, true);
    m_window->UpdatePlayTime();
    QCOMPARE(child<qSliderCtrl>("m_musicPlaySlider")->getValue(), 0.0f);
    QCOMPARE(text("m_labelShowTime"), QStringLiteral("00::00"));
    m_window->SlotSetMusicPlayProgressValue(0.5);
    QCOMPARE(text("m_labelShowTime"), QStringLiteral("00::00"));
}

void TestPlaySongWidget::everySongBringsATimerOfItsOwn()
{
    const auto song = songOf(1000);
    for (int loaded = 1; loaded <= 3; ++loaded) {
        m_window->SetMusicPlayInfo(&song->info, true);
        const auto timers = m_window->findChildren<QTimer*>();
        QCOMPARE(timers.size(), loaded); // oddity 44
        for (const QTimer* timer : timers)
            QVERIFY(timer->isActive() && timer->interval() == 20);
    }
}

/// Under 5 % of a core after fifty songs.
void TestPlaySongWidget::manyTimersCostLittle()
{
    const auto song = songOf(200000);
    m_window->show();
    for (int loaded = 0; loaded < 50; ++loaded)
        m_window->SetMusicPlayInfo(&song->info, true);
    m_window->SlotOnBtnPause();
    heldValue();
    const std::clock_t before = std::clock();
    QTest::qWait(1000);
    const double share = double(std::clock() - before) / CLOCKS_PER_SEC;
    qInfo("50 timers on a paused song: %.1f %% of a core", share * 100);
    if (!sanitized)
        QVERIFY(share < 0.05);
}

/// One song that plays in an open window.
void TestPlaySongWidget::playingCostsLittle()
{
    const auto song = songOf(200000);
    m_window->show();
    m_window->SetMusicPlayInfo(&song->info, true);
    QTRY_VERIFY(text("m_labelShowTime") >= QStringLiteral("00::01"));
    const std::clock_t before = std::clock();
    QTest::qWait(2000);
    const double share = double(std::clock() - before) / CLOCKS_PER_SEC / 2;
    qInfo("a playing song: %.1f %% of a core", share * 100);
    QVERIFY(playing());
    if (!sanitized)
        QVERIFY(share < 0.25);
}

void TestPlaySongWidget::opensBesideAndStaysWhereItWasLeft()
{
    const QRect screen = ScreenPlace::availableAt(QPoint(0, 0));
    m_window->ShowBeside(QRect(screen.topLeft(), QSize(100, 100)));
    QVERIFY(m_window->isVisible());
    QVERIFY(screen.contains(m_window->geometry()));
    const QPoint left = screen.topLeft() + QPoint(17, 23);
    m_window->move(left);
    m_window->close();
    m_window->ShowBeside(QRect(screen.topLeft(), QSize(100, 100)));
    QCOMPARE(m_window->pos(), left);
    m_window->showMinimized();
    m_window->ShowBeside(QRect(screen.topLeft(), QSize(100, 100)));
    QVERIFY(!m_window->isMinimized());
    QCOMPARE(m_window->pos(), left);
}

void TestPlaySongWidget::opensWithItsFrameOnTheScreen_data()
{
    QTest::addColumn<QPoint>("shift"); // of the other window, from the screen's top-left corner
    QTest::newRow("top left") << QPoint(0, 0);
    QTest::newRow("bottom right") << QPoint(700, 500);
    QTest::newRow("beyond the bottom") << QPoint(100, 2000);
}

void TestPlaySongWidget::opensWithItsFrameOnTheScreen()
{
    QFETCH(QPoint, shift);
    const QRect screen = ScreenPlace::availableAt(QPoint(0, 0));
    m_window->ShowBeside(QRect(screen.topLeft() + shift, QSize(100, 100)));
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get(), patience));
    QTRY_VERIFY(screen.contains(m_window->windowHandle()->frameGeometry()));
}

void TestPlaySongWidget::comesBackWhenItsScreenIsGone()
{
    const QRect screen = ScreenPlace::availableAt(QPoint(0, 0));
    const QRect other(screen.topLeft(), QSize(100, 100));
    m_window->ShowBeside(other);
    m_window->move(screen.bottomRight() + QPoint(900, 200));
    m_window->close();
    m_window->ShowBeside(other);
    QVERIFY(screen.contains(m_window->frameGeometry()));
    m_window->move(screen.bottomRight() + QPoint(900, 200)); // while it is open
    m_window->ShowBeside(other);
    QVERIFY(screen.contains(m_window->frameGeometry()));
    const QPoint half(screen.right() - 200, screen.bottom() - 100);
    m_window->move(half);
    m_window->close();
    m_window->ShowBeside(other);
    QCOMPARE(m_window->pos(), half); // left so by the user
}

void TestPlaySongWidget::aFrameThatComesLateIsKeptOnTheScreen()
{
    const QRect screen = ScreenPlace::availableAt(QPoint(0, 0));
    m_window->ShowBeside(QRect(screen.topLeft(), QSize(100, 100)));
    // As if it had turned out larger than thought.
    m_window->move(screen.right() - 300, screen.bottom() - 100);
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get(), patience));
    QTRY_VERIFY(screen.contains(m_window->windowHandle()->frameGeometry()));
}

void TestPlaySongWidget::windowsAreGraspedAtTheirUpperEdge_data()
{
    QTest::addColumn<QRect>("window");
    QTest::addColumn<bool>("graspable");
    QTest::newRow("inside") << QRect(100, 100, 560, 370) << true;
    QTest::newRow("second screen") << QRect(2500, 300, 560, 370) << true;
    QTest::newRow("across both") << QRect(1700, 300, 560, 370) << true;
    QTest::newRow("half below") << QRect(100, 900, 560, 370) << true;
    QTest::newRow("hardly left") << QRect(-510, 100, 560, 370) << false;
    QTest::newRow("below") << QRect(100, 1075, 560, 370) << false;
    QTest::newRow("bar above") << QRect(100, -30, 560, 370) << false;
    QTest::newRow("gone screen") << QRect(5000, 300, 560, 370) << false;
    QTest::newRow("small") << QRect(0, 0, 40, 30) << true;
}

void TestPlaySongWidget::windowsAreGraspedAtTheirUpperEdge()
{
    QFETCH(QRect, window);
    const QVector<QRect> screens = {QRect(0, 0, 1920, 1080), QRect(1920, 0, 1280, 1024)};
    QTEST(ScreenPlace::graspable(window, screens), "graspable");
    QVERIFY(!ScreenPlace::graspable(window, {}));
}

void TestPlaySongWidget::windowsGoBesideOthers_data()
{
    QTest::addColumn<QRect>("other");
    QTest::addColumn<QPoint>("place");
    QTest::newRow("room at the right") << QRect(100, 50, 1000, 700) << QPoint(1100, 50);
    QTest::newRow("room at the left") << QRect(800, 50, 1000, 700) << QPoint(240, 50);
    QTest::newRow("room nowhere") << QRect(400, 50, 1120, 700) << QPoint(1360, 50);
    QTest::newRow("low") << QRect(100, 1000, 1000, 700) << QPoint(1100, 730);
}

void TestPlaySongWidget::windowsGoBesideOthers()
{
    QFETCH(QRect, other);
    QFETCH(QPoint, place);
    QCOMPARE(ScreenPlace::beside(other, QSize(560, 350), QRect(0, 0, 1920, 1080)), place);
}

void TestPlaySongWidget::doesNotKeepTheProgramRunning()
{
    QVERIFY(!m_window->testAttribute(Qt::WA_QuitOnClose));
}

QTEST_MAIN(TestPlaySongWidget)
#include "tst_playsongwidget.moc"
