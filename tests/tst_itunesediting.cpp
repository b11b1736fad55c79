#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "common/qsliderctrl.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "fixtures.h"
#include "guidriver.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunesmodefixture.h"
#include "musicdetailedinfowidget.h"
#include "playsongwidget.h"
#include "songs/songediting.h"
#include "songs/songfields.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QtTest>

/// Editing and deleting in the iTunes mode, through the window.
class TestITunesEditing : public ITunesFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void fromTheScanToTheNextOne();
    void aFailedEditKeepsTheCover();
    void anEditWithACoverChangesTheArtwork();
    void aChosenXpmIsStored();
    void theSongMarkedToBeKeptKeepsItsTrack();
    void anEditedSongWithALongPathStillPlays();
};

/// Scan, edit, play, delete from one group, clear all groups, scan again.
void TestITunesEditing::fromTheScanToTheNextOne()
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
    auto* const player = findWindow<PlaySongWidget>();
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

void TestITunesEditing::aFailedEditKeepsTheCover()
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
    QMusicInfo& song = *songs().first();
    QCOMPARE(QByteArray(song.track->name), QByteArray("B")); // until the next scan
    QVERIFY(!QByteArray(song.track->location).isEmpty());
    QVERIFY(SongEditing::takeBack(song)); // or until what the library says is asked for
    QCOMPARE(QByteArray(song.track->name), QByteArray("A"));
    QVERIFY(!SongEditing::takeBack(song));
    closeITunesLibrary();
    QCOMPARE(library(), before);
}

void TestITunesEditing::anEditWithACoverChangesTheArtwork()
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

void TestITunesEditing::aChosenXpmIsStored()
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
void TestITunesEditing::theSongMarkedToBeKeptKeepsItsTrack()
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

void TestITunesEditing::anEditedSongWithALongPathStillPlays()
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

QTEST_MAIN(TestITunesEditing)
#include "tst_itunesediting.moc"
