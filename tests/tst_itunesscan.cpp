#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "common/qsliderctrl.h"
#include "covers/coverloader.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "fixtures.h"
#include "guidriver.h"
#include "itunes/delmusiclib.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunes/itunestrackrecord.h"
#include "itunesfixture.h"
#include "mainwindow.h"
#include "musicdetailedinfowidget.h"
#include "paintcoverimagethread.h"
#include "playsongwidget.h"
#include "songfixtures.h"
#include "songs/songfields.h"
#include "startup.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMovie>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
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
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
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
    void aChosenXpmIsStored();
    void theSongMarkedToBeKeptKeepsItsTrack();
    void anEditedSongWithALongPathStillPlays();
    void theProgramTakesTheLibraryThatItIsGiven();
    void theWindowAnswersWhileCoversLoad();
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
    /// What the user does with a panel's button, a view's row and an editor's text.
    static void clickIn(const QWidget* panel, const char* button);
    void clickRow(const char* view, int row, bool twice = false) const;
    static void type(const QWidget* panel, const char* editor, const QString& text);
    bool scan() const;
    QList<QMusicInfo*> songs() const;
    /// Identifiers, which tell songs of one group apart as their titles do not: of the songs shown, of the
    /// tracks with these numbers, and of those entries that the library still has.
    QList<QByteArray> shownIds() const;
    QList<QByteArray> idsOf(const QList<int>& tracks) const;
    QList<QByteArray> idsInLibrary() const;
    QString media(const QString& name, const QString& title, const QByteArray& cover = QByteArray());
    void addTrack(const QString& file, const QByteArray& title, quint64 duration = 3000);
    void addTracks(const QString& file, int count);
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

void TestITunesScan::clickIn(const QWidget* panel, const char* button)
{
    auto* found = panel->findChild<QImageButton*>(button);
    QVERIFY2(found && found->isVisible(), button);
    QTest::mouseClick(found, Qt::LeftButton);
}

void TestITunesScan::clickRow(const char* view, int row, bool twice) const
{
    auto* list = part<QListView>(view);
    const QModelIndex index = list->model()->index(row, 0);
    list->scrollTo(index);
    const QPoint place = list->visualRect(index).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    if (twice)
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, place);
}

void TestITunesScan::type(const QWidget* panel, const char* editor, const QString& text)
{
    auto* line = panel->findChild<QLineEdit*>(editor);
    QVERIFY2(line && line->isVisible(), editor);
    QTest::keyClick(line, Qt::Key_A, Qt::ControlModifier);
    QApplication::clipboard()->setText(text); // simulated keys are ASCII only
    QTest::keyClick(line, Qt::Key_V, Qt::ControlModifier);
}

/// Clicks Start Scan and waits for the end of the scan.
bool TestITunesScan::scan() const
{
    click("m_btnStarScan");
    return QTest::qWaitFor([&] { return part<QImageButton>("m_btnStarScan")->isEnabled(); }, patience);
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

QList<QByteArray> TestITunesScan::shownIds() const
{
    QList<QByteArray> ids;
    for (const QMusicInfo* song : songs())
        ids.append(song->track->persistentId);
    return ids;
}

QList<QByteArray> TestITunesScan::idsOf(const QList<int>& tracks) const
{
    QList<QByteArray> ids;
    for (const int track : tracks)
        ids.append(Fixtures::itunesIdentifier(m_tracks.at(track).persistentId));
    return ids;
}

QList<QByteArray> TestITunesScan::idsInLibrary() const
{
    QList<QByteArray> ids;
    const QByteArray text = library();
    for (const Fixtures::ITunesTrack& track : m_tracks)
        if (text.contains("<key>Persistent ID</key><string>" +
                          Fixtures::itunesIdentifier(track.persistentId) + "</string>"))
            ids.append(Fixtures::itunesIdentifier(track.persistentId));
    return ids;
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

/// So many songs of different titles in one file.
void TestITunesScan::addTracks(const QString& file, int count)
{
    for (int i = 0; i < count; ++i)
        addTrack(file, "Song " + QByteArray::number(m_tracks.size()));
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
    for (int i = 0; i < 3; ++i)
        addTrack(media(QString("three%1").arg(i), "Three"), "Three");
    addTrack(media("single", "Single"), "Single", 5000);
    writeLibrary();
    QVERIFY(scan());
    const auto tracks = [&] { return library().count("<key>Track ID</key>"); };
    QCOMPARE(idsInLibrary(), idsOf({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    QCOMPARE(shownIds(), idsInLibrary());

    click("m_btnMusicAll");
    clickRow("m_allMusicListView", 10);
    const auto* details = part<MusicDetailedInfoWidget>("m_musicDetailedWidget");
    clickIn(details, "m_btnEdit");
    type(details, "m_lineTitle", QString::fromUtf8("Østersøen"));
    type(details, "m_lineTrackNo", "99");
    clickIn(details, "m_btnApply");
    const QMusicInfo* single = songs().last();
    QCOMPARE(QString::fromUtf8(single->track->name), QString::fromUtf8("Østersøen"));
    QCOMPARE(quint64(single->track->trackNumber), quint64(99));
    QCOMPARE(AudioFile::read(m_folder->filePath("single.mp3")).texts.value(TAG_TITLE),
             QString::fromUtf8("Østersøen"));
    QVERIFY(QByteArray(single->track->location).endsWith("/single.mp3"));

    clickRow("m_allMusicListView", 10, true);
    PlaySongWidget* player = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<PlaySongWidget*>(window))
            player = found;
    QVERIFY(player && player->isVisible());
    QTRY_VERIFY(player->findChild<qSliderCtrl*>("m_musicPlaySlider")->getValue() > 0);
    player->close();

    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    const auto* group = part<DuplicateMusicDetailedWidget>("m_dupMusicDetailedWidget");
    m_dialogs->expectButton("m_btnOK");
    clickIn(group, "m_btnClearOne");
    QCOMPARE(shownIds(), idsOf({0, 3, 4, 5, 6, 7, 8, 9, 10}));
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    m_dialogs->expect([](QWidget*) {}); // the waiting dialog closes itself
    clickIn(group, "m_btnClearAll");
    QCOMPARE(shownIds(), idsOf({0, 3, 7, 10}));
    for (const char* name : {"one0", "one1", "one2", "two0", "two3", "three2", "single"})
        QVERIFY(QFile::exists(m_folder->filePath(QString("%1.mp3").arg(name)))); // media files stay

    QVERIFY(scan());
    QStringList titles;
    for (const QMusicInfo* song : songs())
        titles.append(QString::fromUtf8(song->track->name));
    QCOMPARE(titles, QStringList({"One", "Two", "Three", QString::fromUtf8("Østersøen")}));
    QCOMPARE(shownIds(), idsOf({0, 3, 7, 10}));
    QVERIFY(songs().last()->track->trackNumber != 99); // never sent
    closeITunesLibrary();
    QCOMPARE(idsInLibrary(), idsOf({0, 3, 7, 10}));
    QCOMPARE(library().count("<key>Persistent ID</key>"), 4);
    QCOMPARE(tracks(), 4 + 4); // the entries, and the playlist's
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
    clickRow("m_allMusicListView", 0);
    clickIn(details, "m_btnEdit");
    type(details, "m_lineTitle", "B");
    clickIn(details, "m_btnApply");
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
    clickRow("m_allMusicListView", 0);
    clickIn(details, "m_btnEdit");
    clickIn(details, "m_btnApply"); // without one the artwork stays
    QCOMPARE(AudioFile::read(a).picture, Fixtures::jpeg(60, 60, 4));
    clickIn(details, "m_btnEdit");
    details->SlotReceiveIdentifyCover(chosen);
    clickIn(details, "m_btnApply");
    QCOMPARE(covered.size(), 2); // every edit that the library takes counts
    QCOMPARE(AudioFile::read(a).picture, picture);
    QCOMPARE(songs().first()->coverPath, chosen);
}

void TestITunesScan::aChosenXpmIsStored()
{
    const QString a = media("a", "A", Fixtures::jpeg(60, 60, 4));
    addTrack(a, "A");
    writeLibrary();
    QVERIFY(scan());
    const QImage drawn = Fixtures::plain(30, 30, QColor(200, 30, 40));
    const QString xpm = Fixtures::savePicture(drawn, m_folder->filePath("chosen.xpm"), "XPM");
    clickRow("m_allMusicListView", 0);
    auto* details = part<MusicDetailedInfoWidget>("m_musicDetailedWidget");
    clickIn(details, "m_btnEdit");
    m_dialogs->expect([xpm](QWidget* dialog) {
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(xpm);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    QTest::mouseClick(details->findChild<QWidget*>("currentImgWidget"), Qt::LeftButton);
    clickIn(details, "m_btnApply");
    QCOMPARE(Fixtures::pixels(QImage::fromData(AudioFile::read(a).picture)), Fixtures::pixels(drawn));
    QVERIFY(scan());
    QCOMPARE(Fixtures::pixels(QImage(songs().first()->coverPath)), Fixtures::pixels(drawn));
}

/// It is another one than the first of its group, and has the same texts.
void TestITunesScan::theSongMarkedToBeKeptKeepsItsTrack()
{
    for (int i = 0; i < 3; ++i)
        addTrack(media(QString("one%1").arg(i), "One"), "One");
    writeLibrary();
    QVERIFY(scan());
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    const auto* group = part<DuplicateMusicDetailedWidget>("m_dupMusicDetailedWidget");
    const QList<DupMusicbarWidget*> rows = group->findChildren<DupMusicbarWidget*>();
    clickIn(rows.at(0), "m_btnIsDeleta");
    clickIn(rows.at(1), "m_btnIsDeleta");
    m_dialogs->expectButton("m_btnOK");
    clickIn(group, "m_btnClearOne");
    QCOMPARE(shownIds(), idsOf({1}));
    closeITunesLibrary();
    QCOMPARE(idsInLibrary(), idsOf({1}));
}

void TestITunesScan::anEditedSongWithALongPathStillPlays()
{
    // As it stands in the library it has more bytes than the answer to an edit has room for.
    const QString name = QString(70, QChar(0x591C));
    QVERIFY(QDir(m_folder->path()).mkpath(name));
    addTrack(media(name + '/' + name, "A"), "A");
    QVERIFY(m_tracks.last().location.size() > 1200);
    writeLibrary();
    QVERIFY(scan());
    const QByteArray location = songs().first()->track->location;
    QVERIFY(QFile::exists(SongFields::audioPath(songs().first())));
    clickRow("m_allMusicListView", 0);
    const auto* details = part<MusicDetailedInfoWidget>("m_musicDetailedWidget");
    clickIn(details, "m_btnEdit");
    type(details, "m_lineTitle", "B");
    clickIn(details, "m_btnApply");
    QCOMPARE(QByteArray(songs().first()->track->name), QByteArray("B"));
    QCOMPARE(QByteArray(songs().first()->track->location), location);
    QVERIFY(QFile::exists(SongFields::audioPath(songs().first())));
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
    addTracks(media("a", "A", Fixtures::jpeg(900, 900, 4)), 100000);
    writeLibrary();
    click("m_btnStarScan");
    QVERIFY(!part<QImageButton>("m_btnStarScan")->isEnabled());
    const QString last = songs().last()->coverPath;
    m_window->close();
    m_window.reset();
    QVERIFY(!QFile::exists(last)); // a hundred thousand covers were not waited for
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
