#include "audiofile.h"
#include "fixtures.h"
#include "guidriver.h"
#include "itunes/delmusiclib.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/itunestrackrecord.h"
#include "itunesmodefixture.h"
#include "paintcoverimagethread.h"
#include "sanitized.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QMovie>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTimer>
#include <QtTest>

/// The iTunes mode over generated libraries and real media files, through the window.
class TestITunesScan : public ITunesFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void anEmptyLibrarySaysSo();
    void aScanShowsTheSongsAndItsResult();
    void skippedTracksCountNowhere();
    void coversComeFromTheMediaFiles();
    void aSecondScanReplacesTheFirst();
    void theSwitchWaitsForTheScan();
    void noScanStartsWhileTheSwitchGlides();
    void theProgramTakesTheLibraryThatItIsGiven();
    void theWindowAnswersWhileCoversLoad();
    void closingDuringAScanTakesAMoment();
    void theLoaderWithoutSongsEndsAtOnce();
    void theLoaderGoesOnAfterATrackWithoutArtwork();
};

void TestITunesScan::anEmptyLibrarySaysSo()
{
    m_dialogs->expectButton("m_btnType");
    QVERIFY(scan());
    QCOMPARE(m_dialogs->texts, QStringList("No file in iTunes Music Library."));
    QCOMPARE(part<QLabel>("m_tipsLabel")->text(),
             QStringLiteral("Scan Finished!\nScan Results: 0 Undefined Song(s); 0 Duplicate Song(s)."));
    QVERIFY(songs().isEmpty());
}

void TestITunesScan::aScanShowsTheSongsAndItsResult()
{
    addTrack(media("a", "A"), "Same");
    addTrack(media("b", "B"), "Same");
    addTrack(media("c", "C"), "Other");
    m_tracks.last().genre.clear();
    writeLibrary();
    click("m_btnStarScan");
    QVERIFY(!part<QImageButton>("m_btnStarScan")->isEnabled());
    QCOMPARE(part<QImageButton>("m_btnStarScan")->accessibleName(), QStringLiteral("Scanning"));
    QCOMPARE(part<QLabel>("m_tipsLabel")->text(), QStringLiteral("Scanning......\nPlease wait a moment!"));
    QVERIFY(part<QLabel>("m_movieLabel")->movie());
    QTRY_VERIFY(part<QImageButton>("m_btnStarScan")->isEnabled());
    QCOMPARE(part<QImageButton>("m_btnStarScan")->accessibleName(), QStringLiteral("Scan again"));
    QVERIFY(!part<QLabel>("m_movieLabel")->movie());
    QCOMPARE(part<QLabel>("m_tipsLabel")->text(),
             QStringLiteral("Scan Finished!\nScan Results: 1 Undefined Song(s); 1 Duplicate Song(s)."));
    QStringList captions;
    for (const QImageButton* button : part<QWidget>("m_leftMusicWidget")->findChildren<QImageButton*>())
        captions.append(button->btnText());
    QCOMPARE(captions, QStringList({"All songs(3)", "Undefined songs(1)", "Duplicate songs(1)"}));
    QCOMPARE(songs().size(), 3);
    QVERIFY(m_dialogs->texts.isEmpty());
}

void TestITunesScan::skippedTracksCountNowhere()
{
    addTrack(media("a", "A"), "Song");
    addTrack(media("b", "B"), "Film");
    m_tracks.last().further = "<key>Movie</key><true/>";
    addTrack(media("c", "C"), "Radio");
    m_tracks.last().type = "URL";
    writeLibrary();
    QVERIFY(scan());
    QCOMPARE(songs().size(), 1);
}

void TestITunesScan::coversComeFromTheMediaFiles()
{
    const QByteArray cover = Fixtures::jpeg(60, 60, 4);
    addTrack(media("a", "A", cover), "With");
    addTrack(media("b", "B"), "Without");
    addTrack(media("c", "C", cover), "With too");
    writeLibrary();
    QVERIFY(scan());
    const QList<QMusicInfo*> found = songs();
    QCOMPARE(found.at(0)->coverPath, QDir::tempPath() + QLatin1String("imagefile/") +
                                         QString::fromUtf8(found.at(0)->track->persistentId));
    QCOMPARE(Fixtures::readBytes(found.at(0)->coverPath), cover);
    QVERIFY(!QFile::exists(found.at(1)->coverPath));
    QCOMPARE(Fixtures::readBytes(found.at(2)->coverPath), cover);
}

void TestITunesScan::aSecondScanReplacesTheFirst()
{
    const QString a = media("a", "A", Fixtures::jpeg(60, 60, 4));
    addTrack(a, "A");
    addTrack(media("b", "B"), "B");
    writeLibrary();
    QVERIFY(scan());
    QCOMPARE(songs().size(), 2);
    const QString cover = songs().first()->coverPath;
    QVERIFY(QFile::exists(cover));
    const QByteArray none;
    AudioFile::write(a, {}, &none);
    m_tracks.removeLast();
    writeLibrary();
    QVERIFY(scan());
    QCOMPARE(songs().size(), 1);
    QVERIFY(!QFile::exists(cover)); // no cover of an earlier scan
    QVERIFY(QDir(m_folder->path()).exists("b.mp3"));
}

void TestITunesScan::theSwitchWaitsForTheScan()
{
    addTrack(media("a", "A"), "A");
    writeLibrary();
    click("m_btnStarScan");
    click("m_btniTunesClean");
    QVERIFY(part<QWidget>("m_btniTunesClean")->isVisible());
    QTRY_VERIFY(part<QImageButton>("m_btnStarScan")->isEnabled());
    click("m_btniTunesClean");
    QVERIFY(!part<QWidget>("m_btniTunesClean")->isVisible());
    QTRY_VERIFY(QIOrvoUtil::m_cleanMode);
    QVERIFY(songs().isEmpty());
}

void TestITunesScan::noScanStartsWhileTheSwitchGlides()
{
    addTrack(media("a", "A"), "A");
    writeLibrary();
    click("m_btniTunesClean");
    click("m_btnStarScan");
    QVERIFY(part<QImageButton>("m_btnStarScan")->isEnabled());
    QTRY_VERIFY(QIOrvoUtil::m_cleanMode);
    QVERIFY(songs().isEmpty());
    QVERIFY(m_dialogs->texts.isEmpty());
}

/// At its start the program applies what an earlier run left: only to the library of its command line.
void TestITunesScan::theProgramTakesTheLibraryThatItIsGiven()
{
    addTrack(media("a", "A"), "A");
    addTrack(media("b", "B"), "B");
    writeLibrary();
    const QByteArray before = library();
    const QString ending = ".melodrift-journal";
    iTunesTrackRecord* records = nullptr;
    int count = 0;
    GetMusicInfo(&records, &count);
    QCOMPARE(int(deleteMusic(m_tracks.first().persistentId)), 1);
    const QByteArray journal = Fixtures::readBytes(m_library + ending);
    closeITunesLibrary();
    const QByteArray after = library();
    const QString named = m_folder->filePath("Named.xml");
    for (const QString& path : {m_library, named}) {
        Fixtures::writeLibrary(path, before);
        Fixtures::writeLibrary(path + ending, journal);
    }

    QProcess program;
    program.setWorkingDirectory(m_folder->path());
    program.start(QStandardPaths::findExecutable("melodrift", {QCoreApplication::applicationDirPath()}),
                  {"--itunes-library", "Named.xml"});
    QVERIFY(program.waitForStarted(patience));
    QTRY_VERIFY(!QFile::exists(named + ending));
    program.kill();
    QVERIFY(program.waitForFinished(patience));
    QCOMPARE(Fixtures::readBytes(named), after);
    QCOMPARE(library(), before);
    QVERIFY(QFile::exists(m_library + ending));
}

void TestITunesScan::theWindowAnswersWhileCoversLoad()
{
    constexpr int sample = 400;
    constexpr int wanted = 2500; // ms
    const QString one = media("a", "A", Fixtures::jpeg(900, 900, 4));
    addTracks(one, sample);
    writeLibrary();
    QElapsedTimer clock;
    clock.start();
    QVERIFY(scan());
    // On a fast machine more songs take as long.
    addTracks(one,
              int(qBound<qint64>(0, wanted * sample / qMax<qint64>(clock.elapsed(), 1) - sample, 50000)));
    writeLibrary();

    click("m_btnStarScan");
    int frames = 0;
    connect(part<QLabel>("m_movieLabel")->movie(), &QMovie::frameChanged, this, [&] { ++frames; });
    clock.start();
    int beats = 0;
    QTimer heart;
    connect(&heart, &QTimer::timeout, this, [&] { ++beats; });
    heart.start(10);
    QTRY_VERIFY(part<QImageButton>("m_btnStarScan")->isEnabled());
    qInfo("%d covers in %lld ms, %d frames shown, %d beats", m_tracks.size(), clock.elapsed(), frames, beats);
    QVERIFY(frames >= 10);
    QVERIFY(beats >= 10);
}

void TestITunesScan::closingDuringAScanTakesAMoment()
{
    addTracks(media("a", "A", Fixtures::jpeg(900, 900, 4)), sanitized ? 20000 : 100000);
    writeLibrary();
    click("m_btnStarScan");
    QVERIFY(!part<QImageButton>("m_btnStarScan")->isEnabled());
    const QString last = songs().last()->coverPath;
    m_window->close();
    m_window.reset();
    QVERIFY(!QFile::exists(last)); // so many covers were not waited for
}

void TestITunesScan::theLoaderWithoutSongsEndsAtOnce()
{
    QList<QMusicInfo*> none;
    PaintCoverImageThread loader;
    QSignalSpy done(&loader, SIGNAL(emitPaintCoverhadfinished()));
    loader.setList(&none);
    loader.start();
    QVERIFY(loader.wait(patience));
    QCOMPARE(done.size(), 1);
    loader.setList(nullptr);
    loader.start();
    QVERIFY(loader.wait(patience));
    QCOMPARE(done.size(), 2);
}

void TestITunesScan::theLoaderGoesOnAfterATrackWithoutArtwork()
{
    addTrack(media("a", "A"), "A");
    addTrack(media("b", "B", Fixtures::jpeg(60, 60, 4)), "B");
    writeLibrary();
    iTunesTrackRecord* records = nullptr;
    int count = 0;
    GetMusicInfo(&records, &count);
    QCOMPARE(count, 2);
    QMusicInfo strange; // a record without an identifier, and a path beyond the buffer
    iTunesTrackRecord unnamed = {};
    strange.track = &unnamed;
    strange.coverPath = m_folder->filePath(QString(300, QLatin1Char('x')));
    QMusicInfo first;
    first.track = records;
    first.coverPath = m_folder->filePath("cover-a");
    QMusicInfo second;
    second.track = records + 1;
    second.coverPath = m_folder->filePath("cover-b");
    QList<QMusicInfo*> list = {&strange, &first, &second};
    PaintCoverImageThread loader;
    QSignalSpy done(&loader, SIGNAL(emitPaintCoverhadfinished()));
    QSignalSpy refreshed(&loader, SIGNAL(emitRefreshImage(int)));
    loader.setList(&list);
    list.clear(); // it has noted what it needs
    loader.start();
    QVERIFY(loader.wait(patience));
    QCOMPARE(done.size(), 1);
    QVERIFY(!QFile::exists(first.coverPath));
    QCOMPARE(Fixtures::readBytes(second.coverPath), Fixtures::jpeg(60, 60, 4));
    QCOMPARE(refreshed.size(), 0);
}

QTEST_MAIN(TestITunesScan)
#include "tst_itunesscan.moc"
