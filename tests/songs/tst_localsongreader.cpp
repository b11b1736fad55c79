#include "audiocore/iaudiotag.h"
#include "audiofile.h"
#include "fixtures.h"
#include "qiorvoutil.h"
#include "qmusicinfo.h"
#include "songs/localintake.h"
#include "startup.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

class TestLocalSongReader : public QObject
{
    Q_OBJECT

public:
    static void initMain() { Startup::beforeApplication(); }

private slots:
    void aTaggedFileBecomesAWholeSong_data();
    void aTaggedFileBecomesAWholeSong();
    void coverFilesAreNumberedFromFifty();
    void songsOfOneAlbumShareTheirCover();
    void coversOfAnIntakeComeByThemselves();
    void aFileWithoutPictureKeepsTheGenericCover();
    void rubbishBecomesASongWithoutFields();
    void textsThatAreNoNumbersGiveZero();
    void formatCodesHaveNames();
    void whatWasAddedIsNotedOncePerIntake();
};

namespace {
QString taggedTone(const QString& kind, const QString& folder, const QByteArray& cover)
{
    const QString path = Fixtures::copyTone(kind, folder, kind);
    AudioFile::write(path,
                     {{TAG_TITLE, "Title"},
                      {TAG_ARTIST, "Artist"},
                      {TAG_ALBUM, "Album"},
                      {TAG_GENRE, "Pop"},
                      {TAG_YEAR, "2012"},
                      {TAG_TRACK, "4"}},
                     &cover);
    return path;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

// First, since the numbers run through the whole process.
void TestLocalSongReader::aTaggedFileBecomesAWholeSong_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("format");
    const QStringList names{"MP3", "M4A", "APE", "AAC", "FLAC", "WMA", "WAV", "OGG"};
    for (int i = 0; i < names.size(); ++i)
        QTest::newRow(qPrintable(names.at(i))) << Fixtures::formats().at(i) << names.at(i);
}

void TestLocalSongReader::aTaggedFileBecomesAWholeSong()
{
    QFETCH(QString, kind);
    QFETCH(QString, format);
    QTemporaryDir folder;
    const QByteArray cover = Fixtures::jpeg(120, 120, 1);
    const QString path = taggedTone(kind, folder.path(), cover);
    LocalSongReader reader;
    reader.begin();
    const quint64 number = musicNum;
    const LocalSongReader::Song song = reader.read(path);
    reader.finish();
    QVERIFY(song.tag && song.decoder);
    const LocalMusicInfo& local = *song.info->localInfo;
    QCOMPARE(local.filePath, path);
    QCOMPARE(local.title, QString("Title"));
    QCOMPARE(local.artist, QString("Artist"));
    QCOMPARE(local.album, QString("Album"));
    QCOMPARE(local.genre, QString("Pop"));
    QCOMPARE(local.year, qint64(2012));
    QCOMPARE(local.trackNumber, qint64(4));
    QCOMPARE(local.format, format);
    QCOMPARE(local.sampleRate, qint64(44100));
    QVERIFY(qAbs(local.duration - 3000) <= 50);
    QVERIFY(local.bitrate > 0 || kind == "ape");
    QCOMPARE(local.coverPath, QDir::tempPath() + "localImage/tempstr" + QString::number(number));
    QCOMPARE(contentOf(local.coverPath), cover);
    QCOMPARE(local.cover->size(), QSize(120, 120));
    QVERIFY(local.spareText.isEmpty());
    // The tag object stays open.
    QCOMPARE(song.tag->GetItemCount(), 7);
}

void TestLocalSongReader::coverFilesAreNumberedFromFifty()
{
    QTemporaryDir folder;
    LocalSongReader reader;
    QCOMPARE(musicNum, quint64(50 + 8)); // after the eight of the test before
    for (int intake = 0; intake < 2; ++intake) {
        reader.begin();
        const auto song = reader.read(taggedTone("mp3", folder.path(), Fixtures::jpeg(60, 60, 40 + intake)));
        reader.finish();
        QVERIFY(song.info->localInfo->coverPath.endsWith(QString("localImage/tempstr%1").arg(58 + intake)));
    }
    QVERIFY(QFile::exists(LocalSongReader::coverFolder() + "/tempstr50"));
}

void TestLocalSongReader::songsOfOneAlbumShareTheirCover()
{
    QTemporaryDir folder;
    const QByteArray cover = Fixtures::jpeg(600, 600, 9);
    LocalSongReader reader;
    const auto one = reader.read(taggedTone("mp3", folder.path(), cover));
    const auto other = reader.read(taggedTone("flac", folder.path(), cover));
    reader.finish();
    QCOMPARE(one.info->localInfo->cover->size(), QSize(300, 300));
    QCOMPARE(one.info->localInfo->cover->cacheKey(), other.info->localInfo->cover->cacheKey());
    QVERIFY(one.info->localInfo->coverPath != other.info->localInfo->coverPath);
    QCOMPARE(contentOf(other.info->localInfo->coverPath), cover);
}

void TestLocalSongReader::coversOfAnIntakeComeByThemselves()
{
    QTemporaryDir folder;
    LocalIntake intake;
    QList<QMusicInfo*> songs;
    QList<IAudioTag*> tags;
    // It takes a while to decode.
    intake.add({taggedTone("mp3", folder.path(), Fixtures::jpeg(4000, 4000, 3))}, songs, tags);
    QTRY_COMPARE(songs.first()->localInfo->cover->size(), QSize(300, 300));
    intake.reader().forgetCovers();
    qDeleteAll(songs);
}

void TestLocalSongReader::aFileWithoutPictureKeepsTheGenericCover()
{
    LocalSongReader reader;
    const auto song = reader.read(Fixtures::tone("mp3"));
    QVERIFY(song.info->localInfo->coverPath.isEmpty());
    QCOMPARE(song.info->localInfo->cover->cacheKey(), LocalMusicInfo().cover->cacheKey());
}

void TestLocalSongReader::rubbishBecomesASongWithoutFields()
{
    LocalSongReader reader;
    const auto song = reader.read("/nowhere/at all.mp3");
    const LocalMusicInfo& local = *song.info->localInfo;
    QVERIFY(local.title.isEmpty() && local.artist.isEmpty());
    QCOMPARE(local.duration, qint64(0));
    QCOMPARE(local.bitrate, qint64(0));
    QCOMPARE(local.format, QString("MP3")); // every unknown code is called so
    QVERIFY(song.tag);
}

void TestLocalSongReader::textsThatAreNoNumbersGiveZero()
{
    QTemporaryDir folder;
    const QString path = Fixtures::copyTone("mp3", folder.path());
    AudioFile::write(path, {{TAG_TITLE, "T"}, {TAG_YEAR, "abc"}});
    LocalSongReader reader;
    QCOMPARE(reader.read(path).info->localInfo->year, qint64(0));
}

void TestLocalSongReader::formatCodesHaveNames()
{
    const QStringList names{"WAV", "WMA", "MP3", "AAC", "M4A", "OGG", "APE", "FLAC"};
    for (int code = 0; code < names.size(); ++code)
        QCOMPARE(LocalSongReader::formatName(code), names.at(code));
    QCOMPARE(LocalSongReader::formatName(8), QString("MP3"));
    QCOMPARE(LocalSongReader::formatName(-1), QString("MP3"));
}

void TestLocalSongReader::whatWasAddedIsNotedOncePerIntake()
{
    QTemporaryDir folder;
    const QString path = taggedTone("mp3", folder.path(), Fixtures::jpeg(60, 60, 1));
    LocalSongReader reader;
    reader.begin();
    const auto one = reader.read(path);
    const auto other = reader.read(path);
    reader.finish();
    QStringList expected{path};
    expected << QStringList({"Title", "Artist", "Album", "Pop", "2012", "4"})
             << one.info->localInfo->coverPath << path << other.info->localInfo->coverPath;
    QCOMPARE(reader.addedPaths(), expected);
    reader.begin();
    QVERIFY(reader.addedPaths().isEmpty());
}

QTEST_MAIN(TestLocalSongReader)
#include "tst_localsongreader.moc"
