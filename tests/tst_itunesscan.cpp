#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "coverloader.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "fixtures.h"
#include "guidriver.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/itunestrackrecord.h"
#include "itunesfixture.h"
#include "mainwindow.h"
#include "musicdetailedinfowidget.h"
#include "paintcoverimagethread.h"
#include "playsongwidget.h"
#include "songfixtures.h"
#include "startup.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMovie>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

/// The iTunes mode over generated libraries and real media files, through the window.
class TestITunesScan : public QObject
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

    void anEmptyLibrarySaysSo();
    void aScanShowsTheSongsAndItsResult();
    void skippedTracksCountNowhere();
    void coversComeFromTheMediaFiles();
    void aSecondScanReplacesTheFirst();
    void theSwitchWaitsForTheScan();
    void noScanStartsWhileTheSwitchGlides();
    void fromTheScanToTheNextOne();
    void aFailedEditKeepsTheCover();
    void anEditWithACoverChangesTheArtwork();
    void theAnimationMovesWhileCoversLoad();
    void closingDuringAScanTakesAMoment();
    void theLoaderWithoutSongsEndsAtOnce();
    void theLoaderGoesOnAfterATrackWithoutArtwork();

private:
    template <typename T>
    T* part(const char* name) const
    {
        return m_window->findChild<T*>(name);
    }
    void click(const char* button) const { QTest::mouseClick(part<QImageButton>(button), Qt::LeftButton); }
    bool scan() const;
    QList<QMusicInfo*> songs() const;
    QString media(const QString& name, const QString& title, const QByteArray& cover = QByteArray());
    void addTrack(const QString& file, const QByteArray& title, quint64 duration = 3000);
    void writeLibrary();
    QByteArray library() const { return Fixtures::readBytes(m_library); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_library;
    QVector<Fixtures::ITunesTrack> m_tracks;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<DialogDriver> m_dialogs;
};

void TestITunesScan::initTestCase()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

void TestITunesScan::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_library = m_folder->filePath("iTunes Music Library.xml");
    qputenv("MELODRIFT_ITUNES_LIBRARY", m_library.toUtf8());
    m_tracks.clear();
    m_window = std::make_unique<MainWindow>();
    m_window->setMinimumSize(1000, 700);
    m_window->show();
    m_dialogs = std::make_unique<DialogDriver>();
}

void TestITunesScan::cleanup()
{
    m_window.reset();
    m_dialogs.reset();
    closeITunesLibrary();
    QIOrvoUtil::m_cleanMode = false;
    m_local_add_or_ScanAgain = 0;
}

/// Clicks Start Scan and waits for the end of the scan.
bool TestITunesScan::scan() const
{
    click("m_btnStarScan");
    return QTest::qWaitFor([&] { return part<QImageButton>("m_btnStarScan")->isEnabled(); }, 20000);
}

QList<QMusicInfo*> TestITunesScan::songs() const
{
    part<CenterWidget>("m_middleMusicWidget")->slotShowAllmusicView();
    const auto* model = part<QListView>("m_allMusicListView")->model();
    QList<QMusicInfo*> found;
    for (int row = 0; row < model->rowCount(); ++row)
        found.append(static_cast<QMusicInfo*>(model->index(row, 0).internalPointer()));
    return found;
}

QString TestITunesScan::media(const QString& name, const QString& title, const QByteArray& cover)
{
    const QString path = Fixtures::copyTone("mp3", m_folder->path(), name);
    AudioFile::write(path, {{TAG_TITLE, title}}, &cover);
    return path;
}

void TestITunesScan::addTrack(const QString& file, const QByteArray& title, quint64 duration)
{
    Fixtures::ITunesTrack track = Fixtures::itunesTrack(m_tracks.size(), file);
    track.name = title;
    track.duration = duration;
    m_tracks.append(track);
}

void TestITunesScan::writeLibrary()
{
    Fixtures::ITunesPlaylist all;
    all.name = "Library";
    for (const Fixtures::ITunesTrack& track : m_tracks)
        all.trackIds.append(track.trackId);
    Fixtures::writeLibrary(m_library, Fixtures::itunesLibrary(m_tracks, {all}));
}

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

/// Scan, edit, play, delete from one group, clear all groups, scan again.
void TestITunesScan::fromTheScanToTheNextOne()
{
    for (int i = 0; i < 3; ++i)
        addTrack(media(QString("one%1").arg(i), "One"), "One");
    for (int i = 0; i < 4; ++i)
        addTrack(media(QString("two%1").arg(i), "Two"), "Two");
    addTrack(media("single", "Single"), "Single", 5000);
    writeLibrary();
    QVERIFY(scan());
    const auto tracks = [&] { return library().count("<key>Track ID</key>"); };
    QCOMPARE(library().count("<key>Persistent ID</key>"), 8);

    auto* center = part<CenterWidget>("m_middleMusicWidget");
    QMusicInfo* single = songs().last();
    auto* details = part<MusicDetailedInfoWidget>("m_musicDetailedWidget");
    details->SetMusicDetailedInfo(single);
    details->SlotOnBtnEdit();
    details->findChild<QLineEdit*>("m_lineTitle")->setText(QString::fromUtf8("Østersøen"));
    details->findChild<QLineEdit*>("m_lineTrackNo")->setText("99");
    details->SlotOnBtnApply();
    QCOMPARE(QString::fromUtf8(single->track->name), QString::fromUtf8("Østersøen"));
    QCOMPARE(quint64(single->track->trackNumber), quint64(99));
    QCOMPARE(AudioFile::read(m_folder->filePath("single.mp3")).texts.value(TAG_TITLE),
             QString::fromUtf8("Østersøen"));
    QVERIFY(QByteArray(single->track->location).endsWith("/single.mp3"));

    emit center->emitStartToPlayMusic(single);
    PlaySongWidget* player = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<PlaySongWidget*>(window))
            player = found;
    QVERIFY(player && player->isVisible());
    QTRY_COMPARE(player->findChild<QLabel*>("m_labelShowTime")->text(), QStringLiteral("00::01"));
    player->close();

    center->slotShowDuplicateMusicView();
    auto* groups = part<QListView>("m_dupMusicListView");
    QTest::mouseClick(groups->viewport(), Qt::LeftButton, Qt::NoModifier,
                      groups->visualRect(groups->model()->index(0, 0)).center());
    part<DuplicateMusicDetailedWidget>("m_dupMusicDetailedWidget")->SlotDeleteSongWasSelected();
    QCOMPARE(songs().size(), 6);
    center->slotShowDuplicateMusicView();
    m_dialogs->expect([](QWidget*) {});
    center->SlotDeleteAllDupMusic();
    QCOMPARE(songs().size(), 3);
    for (const char* name : {"one0", "one1", "one2", "two0", "two3", "single"})
        QVERIFY(QFile::exists(m_folder->filePath(QString("%1.mp3").arg(name)))); // media files stay

    QVERIFY(scan());
    QStringList titles;
    for (const QMusicInfo* song : songs())
        titles.append(QString::fromUtf8(song->track->name));
    QCOMPARE(titles, QStringList({"One", "Two", QString::fromUtf8("Østersøen")}));
    QVERIFY(songs().last()->track->trackNumber != 99); // never sent
    closeITunesLibrary();
    QCOMPARE(library().count("<key>Persistent ID</key>"), 3);
    QCOMPARE(tracks(), 3 + 3); // the entries, and the playlist's
}

void TestITunesScan::aFailedEditKeepsTheCover()
{
    addTrack(media("a", "A"), "A");
    writeLibrary();
    QVERIFY(scan());
    QFile::remove(m_folder->filePath("a.mp3"));
    auto* details = part<MusicDetailedInfoWidget>("m_musicDetailedWidget");
    QSignalSpy covered(details, SIGNAL(emitMusicCoverHasChanged()));
    QSignalSpy edited(details, SIGNAL(emitMusicInfoHasChanged()));
    const QByteArray before = library();
    details->SetMusicDetailedInfo(songs().first());
    details->SlotOnBtnEdit();
    details->findChild<QLineEdit*>("m_lineTitle")->setText("B");
    details->SlotOnBtnApply();
    QCOMPARE(covered.size(), 0);
    QCOMPARE(edited.size(), 1);
    QCOMPARE(QByteArray(songs().first()->track->name), QByteArray("B")); // until the next scan
    QVERIFY(!QByteArray(songs().first()->track->location).isEmpty());
    closeITunesLibrary();
    QCOMPARE(library(), before);
}

void TestITunesScan::anEditWithACoverChangesTheArtwork()
{
    const QString a = media("a", "A", Fixtures::jpeg(60, 60, 4));
    addTrack(a, "A");
    writeLibrary();
    QVERIFY(scan());
    const QByteArray picture = Fixtures::jpeg(80, 80, 9);
    const QString chosen = Fixtures::saveBytes(picture, m_folder->filePath("chosen.jpg"));
    auto* details = part<MusicDetailedInfoWidget>("m_musicDetailedWidget");
    QSignalSpy covered(details, SIGNAL(emitMusicCoverHasChanged()));
    details->SetMusicDetailedInfo(songs().first());
    details->SlotOnBtnEdit();
    details->SlotOnBtnApply(); // without one the artwork stays
    QCOMPARE(AudioFile::read(a).picture, Fixtures::jpeg(60, 60, 4));
    details->SlotOnBtnEdit();
    details->SlotReceiveIdentifyCover(chosen);
    details->SlotOnBtnApply();
    QCOMPARE(covered.size(), 2); // every edit that the library takes counts
    QCOMPARE(AudioFile::read(a).picture, picture);
    QCOMPARE(songs().first()->coverPath, chosen);
}

void TestITunesScan::theAnimationMovesWhileCoversLoad()
{
    const QString one = media("a", "A", Fixtures::jpeg(900, 900, 4));
    for (int i = 0; i < 400; ++i) {
        const QString copy = m_folder->filePath(QString("copy%1.mp3").arg(i));
        QFile::copy(one, copy);
        addTrack(copy, QByteArray("Song ") + QByteArray::number(i));
    }
    writeLibrary();
    click("m_btnStarScan");
    int frames = 0;
    connect(part<QLabel>("m_movieLabel")->movie(), &QMovie::frameChanged, this, [&] { ++frames; });
    QElapsedTimer clock;
    clock.start();
    QTRY_VERIFY_WITH_TIMEOUT(part<QImageButton>("m_btnStarScan")->isEnabled(), 30000);
    qInfo("400 covers in %lld ms, %d frames shown", clock.elapsed(), frames);
    QVERIFY(frames > 0);
    QVERIFY(frames >= clock.elapsed() / 200);
}

void TestITunesScan::closingDuringAScanTakesAMoment()
{
    const QString one = media("a", "A", Fixtures::jpeg(900, 900, 4));
    for (int i = 0; i < 5000; ++i)
        addTrack(one, QByteArray("Song ") + QByteArray::number(i));
    writeLibrary();
    click("m_btnStarScan");
    QVERIFY(!part<QImageButton>("m_btnStarScan")->isEnabled());
    QElapsedTimer clock;
    clock.start();
    m_window->close();
    m_window.reset();
    QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
}

void TestITunesScan::theLoaderWithoutSongsEndsAtOnce()
{
    QList<QMusicInfo*> none;
    PaintCoverImageThread loader;
    QSignalSpy done(&loader, SIGNAL(emitPaintCoverhadfinished()));
    loader.setList(&none);
    loader.start();
    QVERIFY(loader.wait(20000));
    QCOMPARE(done.size(), 1);
    loader.setList(nullptr);
    loader.start();
    QVERIFY(loader.wait(20000));
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
    QVERIFY(loader.wait(20000));
    QCOMPARE(done.size(), 1);
    QVERIFY(!QFile::exists(first.coverPath));
    QCOMPARE(Fixtures::readBytes(second.coverPath), Fixtures::jpeg(60, 60, 4));
    QCOMPARE(refreshed.size(), 0);
}

QTEST_MAIN(TestITunesScan)
#include "tst_itunesscan.moc"
