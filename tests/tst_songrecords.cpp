#include "dupmusicinfo.h"
#include "itunes/itunestrackrecord.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songs/songfields.h"

#include <QtTest>

class TestSongRecords : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QIOrvoUtil::m_cleanMode = false; }

    void aNewSongNamesTheGenericCover();
    void aNewLocalInfoCarriesTheGenericCover();
    void theModeDecidesWhereFieldsComeFrom();
    void aNullTextIsEmpty();
    void aSongWithoutDataOfTheModeHasNoFields();
    void bitRatesRoundDown();
    void oneGenericCoverServesAllSongs();
};

void TestSongRecords::aNewSongNamesTheGenericCover()
{
    const QMusicInfo song;
    QVERIFY(!song.track);
    QVERIFY(!song.localInfo);
    QCOMPARE(song.reserved, 0);
    QCOMPARE(song.coverPath, QIOrvoUtil::getResourcePath() + "/Image/big.png");
}

void TestSongRecords::aNewLocalInfoCarriesTheGenericCover()
{
    const LocalMusicInfo local;
    QVERIFY(local.cover && !local.cover->isNull());
    for (const QString& text : {local.title, local.artist, local.album, local.genre, local.spareText,
                                local.filePath, local.coverPath, local.format})
        QVERIFY(text.isEmpty());
    for (const qint64 number :
         {local.year, local.trackNumber, local.spareNumber, local.bitrate, local.sampleRate, local.duration})
        QCOMPARE(number, qint64(0));
    QVERIFY(DupMusicInfo().musicList.isEmpty());
}

void TestSongRecords::theModeDecidesWhereFieldsComeFrom()
{
    iTunesTrackRecord track = {};
    track.name = "Tr\xC3\xA4"
                 "ck";
    track.artist = "A";
    track.album = "B";
    track.genre = "C";
    track.year = 1990;
    track.trackNumber = 2;
    track.duration = 1000;
    track.bitRate = 320;
    track.sampleRate = 48000;
    QMusicInfo song;
    song.track = &track;
    song.coverPath = "track cover";
    song.localInfo = std::make_unique<LocalMusicInfo>();
    song.localInfo->title = "Local";
    song.localInfo->year = 2001;
    song.localInfo->bitrate = 191999;
    song.localInfo->coverPath = "local cover";

    QCOMPARE(SongFields::title(&song), QString::fromUtf8("Träck"));
    QCOMPARE(SongFields::year(&song), quint64(1990));
    QCOMPARE(SongFields::trackNumber(&song), quint64(2));
    QCOMPARE(SongFields::duration(&song), quint64(1000));
    QCOMPARE(SongFields::bitRateKbps(&song), quint64(320));
    QCOMPARE(SongFields::sampleRate(&song), quint64(48000));
    QCOMPARE(SongFields::coverPath(&song), QString("track cover"));
    QIOrvoUtil::m_cleanMode = true;
    QCOMPARE(SongFields::title(&song), QString("Local"));
    QCOMPARE(SongFields::year(&song), quint64(2001));
    QCOMPARE(SongFields::coverPath(&song), QString("local cover"));
    QVERIFY(SongFields::artist(&song).isEmpty());
}

void TestSongRecords::aNullTextIsEmpty()
{
    iTunesTrackRecord track = {};
    QMusicInfo song;
    song.track = &track;
    QVERIFY(SongFields::title(&song).isEmpty());
    QVERIFY(SongFields::genre(&song).isEmpty());
}

void TestSongRecords::aSongWithoutDataOfTheModeHasNoFields()
{
    const QMusicInfo song;
    for (const bool local : {false, true}) {
        QIOrvoUtil::m_cleanMode = local;
        QVERIFY(!SongFields::available(&song));
        QVERIFY(!SongFields::available(nullptr));
        QVERIFY(SongFields::album(&song).isEmpty());
        QVERIFY(SongFields::coverPath(&song).isEmpty());
        QCOMPARE(SongFields::duration(&song), quint64(0));
        QCOMPARE(SongFields::title(nullptr), QString());
    }
}

void TestSongRecords::bitRatesRoundDown()
{
    QMusicInfo song;
    song.localInfo = std::make_unique<LocalMusicInfo>();
    song.localInfo->bitrate = 191999;
    QIOrvoUtil::m_cleanMode = true;
    QCOMPARE(SongFields::bitRateKbps(&song), quint64(191));
}

void TestSongRecords::oneGenericCoverServesAllSongs()
{
    const LocalMusicInfo one;
    const LocalMusicInfo other;
    QCOMPARE(one.cover->cacheKey(), other.cover->cacheKey());
}

QTEST_MAIN(TestSongRecords)
#include "tst_songrecords.moc"
