#include "audiofile.h"
#include "centerwidget.h"
#include "common/qimagebutton.h"
#include "covers/decodequeue.h"
#include "deletingmusicwaitingdlg.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicinfo.h"
#include "fixtures.h"
#include "guidriver.h"
#include "identifythread.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/itunestrackrecord.h"
#include "itunesfixture.h"
#include "loadplayerthread.h"
#include "loggedlines.h"
#include "mainwindow.h"
#include "musicdetailedinfowidget.h"
#include "owntrash.h"
#include "paintcoverimagethread.h"
#include "shortage.h"
#include "songfixtures.h"
#include "startup.h"

#include <QDir>
#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>
#include <new>

using Shortage::Whose;

/// The window's workers on a machine that has no threads or no memory left: each tells that its work is over,
/// and the program goes on.
class TestWorkerShortage : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void picturesAreDecodedWithHoweverFewThreads_data();
    void picturesAreDecodedWithHoweverFewThreads();
    void aDecodingThatFailsIsNoPicture();
    void identifyingWithoutAThreadFails();
    void identifyingWithoutMemoryFails();
    void aScanWithoutAThreadEnds();
    void artworkThatDoesNotFitEndsTheLoading();
    void deletingWithoutAThreadDeletesNothing();

private:
    void writeLibrary(int tracks, const QByteArray& cover);

    const OwnTrash m_bin;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<DialogDriver> m_dialogs;
};

void TestWorkerShortage::initTestCase()
{
    Startup::afterApplication();
    Fixtures::genericCover();
    // The player is loaded once, at a song's first sight: threads are counted without that one, and memory
    // that is refused while libraries load ends badly.
    LoadPlayerThread::startSoon();
    auto* const loading = qApp->findChild<LoadPlayerThread*>();
    QTRY_VERIFY(loading && loading->isFinished());
}

void TestWorkerShortage::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_dialogs = std::make_unique<DialogDriver>();
}

void TestWorkerShortage::cleanup()
{
    m_dialogs.reset();
    closeITunesLibrary();
}

void TestWorkerShortage::picturesAreDecodedWithHoweverFewThreads_data()
{
    QTest::addColumn<int>("threads");
    QTest::newRow("none") << 0;
    QTest::newRow("one") << 1;
}

void TestWorkerShortage::picturesAreDecodedWithHoweverFewThreads()
{
    QFETCH(int, threads);
    const LoggedLines log;
    const Shortage::OfThreads few(threads);
    DecodeQueue queue;
    std::vector<std::future<QImage>> images;
    for (int i = 1; i <= 20; ++i)
        images.push_back(queue.add([i] { return QImage(i, i, QImage::Format_RGB32); }));
    for (int i = 1; i <= 20; ++i)
        QCOMPARE(images.at(size_t(i) - 1).get().width(), i);
    QCOMPARE(LoggedLines::take().size(), threads == 0 ? 1 : 0);
}

void TestWorkerShortage::aDecodingThatFailsIsNoPicture()
{
    const LoggedLines log;
    DecodeQueue queue;
    QVERIFY(queue.add([]() -> QImage { throw std::bad_alloc(); }).get().isNull());
    QCOMPARE(LoggedLines::take().size(), 1);
    QVERIFY(!queue.add([] { return QImage(1, 1, QImage::Format_RGB32); }).get().isNull());
}

void TestWorkerShortage::identifyingWithoutAThreadFails()
{
    const Fixtures::ModeGuard mode(true);
    QMusicInfo song;
    song.localInfo = std::make_unique<LocalMusicInfo>();
    song.localInfo->filePath = m_folder->filePath("song.mp3");
    MusicDetailedInfoWidget panel;
    panel.resize(330, 572);
    panel.SetMusicDetailedInfo(&song);
    QSignalSpy forbidden(&panel, SIGNAL(emitForbidToClickView(bool)));
    const LoggedLines log;
    {
        const Shortage::OfThreads none;
        QTest::mouseClick(panel.findChild<QImageButton*>("m_btnIdentify"), Qt::LeftButton);
        QTRY_VERIFY(panel.findChild<QImageButton*>("m_btnApply")->isEnabled());
    }
    QTRY_VERIFY(panel.findChildren<IdentifyThread*>().isEmpty());
    QCOMPARE(m_dialogs->texts, QStringList("Identify failed! You can edit the music information manually."));
    QCOMPARE(forbidden.last().first().toBool(), false);
    const QStringList lines = LoggedLines::take();
    QVERIFY2(lines.filter("thread", Qt::CaseInsensitive).size() == 1, qPrintable(lines.join('\n')));
    panel.SetMusicDetailedInfo(nullptr);
}

void TestWorkerShortage::identifyingWithoutMemoryFails()
{
    const LoggedLines log;
    IdentifyThread worker;
    QSignalSpy failed(&worker, SIGNAL(emitFailToIdentify()));
    worker.ReturnIdentifyInfo(QString(3000, QLatin1Char('x')));
    const Shortage::OfMemory little(Whose::Others, 10000);
    worker.start();
    QVERIFY(worker.wait());
    QCOMPARE(Shortage::OfMemory::refused(), 1);
    QCOMPARE(failed.size(), 1);
    QCOMPARE(LoggedLines::take().size(), 1);
}

void TestWorkerShortage::writeLibrary(int tracks, const QByteArray& cover)
{
    const QString media = Fixtures::copyTone("mp3", m_folder->path(), "song");
    AudioFile::write(media, {{0, QStringLiteral("T")}}, &cover);
    QVector<Fixtures::ITunesTrack> all;
    for (int i = 0; i < tracks; ++i)
        all.append(Fixtures::itunesTrack(i, media));
    const QString library = m_folder->filePath("Library.xml");
    Fixtures::writeLibrary(library, Fixtures::itunesLibrary(all, {}));
    qputenv("MELODRIFT_ITUNES_LIBRARY", library.toUtf8());
}

void TestWorkerShortage::aScanWithoutAThreadEnds()
{
    writeLibrary(3, Fixtures::jpeg(60, 60, 4));
    MainWindow window;
    window.show();
    auto* button = window.findChild<QImageButton*>("m_btnStarScan");
    {
        const Shortage::OfThreads none;
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_VERIFY(button->isEnabled());
    }
    QCOMPARE(window.findChild<QListView*>("m_allMusicListView")->model()->rowCount(), 3);
    QVERIFY(window.findChild<QLabel*>("m_tipsLabel")->text().startsWith("Scan Finished!"));
    QTest::mouseClick(button, Qt::LeftButton); // and again, when there are threads
    QTRY_VERIFY(button->isEnabled());
}

void TestWorkerShortage::artworkThatDoesNotFitEndsTheLoading()
{
    writeLibrary(2, Fixtures::jpeg(60, 60, 4) + QByteArray(1000000, 'x'));
    iTunesTrackRecord* records = nullptr;
    int count = 0;
    GetMusicInfo(&records, &count);
    QCOMPARE(count, 2);
    QMusicInfo song;
    song.track = records;
    song.coverPath = m_folder->filePath("cover");
    QList<QMusicInfo*> list = {&song};
    const LoggedLines log;
    PaintCoverImageThread loader;
    QSignalSpy done(&loader, SIGNAL(emitPaintCoverhadfinished()));
    loader.setList(&list);
    int asked = 0;
    for (int run = 1; run <= 2; ++run) { // the first one leaves what it has read to the next
        const Shortage::OfMemory enough(Whose::Others, 1000000, std::numeric_limits<int>::max());
        loader.start();
        QVERIFY(loader.wait());
        asked = Shortage::OfMemory::asked();
        QCOMPARE(done.size(), run);
        QVERIFY(QFile::remove(song.coverPath));
    }
    {
        // The last one: the tag library, which asks first, loses what it has begun.
        const Shortage::OfMemory little(Whose::Others, 1000000, asked - 1);
        loader.start();
        QVERIFY(loader.wait());
        QCOMPARE(Shortage::OfMemory::refused(), 1);
    }
    QCOMPARE(done.size(), 3);
    QCOMPARE(LoggedLines::take().size(), 1);
    QVERIFY(!QFile::exists(song.coverPath));
    song.track = nullptr;
}

void TestWorkerShortage::deletingWithoutAThreadDeletesNothing()
{
    const QString first = Fixtures::copyTone("mp3", m_folder->path(), "first");
    AudioFile::write(first, {{0, QStringLiteral("T")}, {1, QStringLiteral("A")}});
    QFile::copy(first, m_folder->filePath("second.mp3"));
    CenterWidget center;
    center.resize(920, 585);
    center.show();
    center.SwitchToLocalCleanModel();
    m_dialogs->expectButton("m_btnType");
    center.TakeDroppedPaths({m_folder->path()});
    QCOMPARE(center.ReturnDuplicateMusicCount(), 1);
    const LoggedLines log;
    bool stayed = false;
    {
        const Shortage::OfThreads none;
        QTimer::singleShot(patience, &center, [&stayed] { // or it would stay for ever
            stayed = true;
            if (auto* waiting = qobject_cast<DeletingMusicWaitingDlg*>(QApplication::activeModalWidget()))
                waiting->finish();
        });
        center.SlotDeleteAllDupMusic();
        QVERIFY(!stayed);
    }
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(LoggedLines::take().size(), 1);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 2);
    QCOMPARE(center.ReturnDuplicateMusicCount(), 1);
    QVERIFY(!center.ListsAreInUse());
    QVERIFY(center.findChild<QListView*>("m_dupMusicListView")->isEnabled());
    center.SlotDeleteAllDupMusic(); // and again, when there are threads
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 1);
    {
        const Shortage::OfThreads none;
        center.SlotUndo(); // nobody is left without the files
    }
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 2);
    QCOMPARE(center.ReturnDuplicateMusicCount(), 1);
    QVERIFY(!center.ListsAreInUse());
    QIOrvoUtil::m_cleanMode = false;
}

QTEST_MAIN(TestWorkerShortage)
#include "tst_workershortage.moc"
