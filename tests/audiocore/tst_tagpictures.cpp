#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "mediabytes.h"
#include "playing.h"
#include "severalpictures.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
constexpr int megabyte = 1024 * 1024;

QByteArray pictureOf(int bytes)
{
    return "\x89PNG\r\n\x1a\n" + QByteArray(bytes - 8, 'p');
}

/// An MP3 with these pictures: the front cover, the back cover.
QString songWith(const QString& folder, const QByteArrayList& pictures)
{
    const QString path = Fixtures::copyTone(QStringLiteral("mp3"), folder);
    SeveralPictures::add(path, pictures);
    return path;
}

int picturesIn(const QString& path)
{
    return SeveralPictures::countIn(path);
}

void verifyPlays(const QString& path)
{
    const Playing::Player player = Playing::opened(path);
    QVERIFY2(Playing::reaches(*player, PLAYER_STATE_PAUSED), qPrintable(path));
    player->Play();
    QVERIFY2(Playing::passes(*player, 200), qPrintable(path));
}
} // namespace

class TestTagPictures : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { Playing::chooseOutput(QStringLiteral("null")); }
    void theChosenPictureIsTheOnlyOne();
    void allPicturesAreTakenOut();
    void theLargestPicturesArePlayedAndRead_data();
    void theLargestPicturesArePlayedAndRead();
    void aPictureTooLargeLeavesTheTexts_data();
    void aPictureTooLargeLeavesTheTexts();
    void musicBehindAVastPictureIsPlayed();
    void aPictureIsReadBehindVastFieldsOfOthers();
    void aPictureOfAVastKindIsNone_data();
    void aPictureOfAVastKindIsNone();

private:
    QTemporaryDir m_folder;
};

void TestTagPictures::theChosenPictureIsTheOnlyOne()
{
    const QByteArray front = pictureOf(500);
    const QString path = songWith(m_folder.path(), {front, pictureOf(600)});
    QCOMPARE(picturesIn(path), 2);
    // It is the front cover already; the others go all the same.
    QCOMPARE(AudioFile::write(path, {}, &front), 0);
    QCOMPARE(picturesIn(path), 1);
    QCOMPARE(AudioFile::read(path).picture, front);
}

void TestTagPictures::allPicturesAreTakenOut()
{
    // Also one that is too large to be shown.
    const QByteArray none;
    const QString path = songWith(m_folder.path(), {pictureOf(40 * megabyte)});
    QVERIFY(AudioFile::read(path).picture.isEmpty());
    QCOMPARE(AudioFile::write(path, {}, &none), 0);
    QCOMPARE(picturesIn(path), 0);
}

static void addKinds()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("most");
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds()) {
        const int most = kind == QLatin1String("flac")      ? 16 * megabyte - 65536
                         : kind == QLatin1String("oggflac") ? 12 * megabyte - 49152
                                                            : 32 * megabyte;
        QTest::newRow(qPrintable(kind)) << kind << most;
    }
}

void TestTagPictures::theLargestPicturesArePlayedAndRead_data()
{
    addKinds();
}

void TestTagPictures::theLargestPicturesArePlayedAndRead()
{
    QFETCH(QString, kind);
    QFETCH(int, most);
    const QString path = Fixtures::copyTone(kind, m_folder.path());
    const QByteArray picture = pictureOf(most);
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}, &picture), 0);
    const AudioFile::Content content = AudioFile::read(path);
    QCOMPARE(content.texts.value(TAG_TITLE), QStringLiteral("New"));
    QVERIFY(content.picture == picture);
    verifyPlays(path);
}

void TestTagPictures::aPictureTooLargeLeavesTheTexts_data()
{
    addKinds();
}

void TestTagPictures::aPictureTooLargeLeavesTheTexts()
{
    QFETCH(QString, kind);
    QFETCH(int, most);
    const QString path = Fixtures::copyTone(kind, m_folder.path());
    const QByteArray old = pictureOf(700);
    QCOMPARE(AudioFile::write(path, {{TAG_ARTIST, QStringLiteral("Singer")}}, &old), 0);
    const QByteArray picture = pictureOf(most + 1);
    AudioFile::takeLog();
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}, &picture) != 0);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains(path) && log.first().contains(QLatin1String("picture")),
             qPrintable(log.first()));
    const AudioFile::Content content = AudioFile::read(path);
    QCOMPARE(content.texts.value(TAG_TITLE), QStringLiteral("New"));
    QCOMPARE(content.texts.value(TAG_ARTIST), QStringLiteral("Singer"));
    QCOMPARE(content.picture, old);
}

void TestTagPictures::musicBehindAVastPictureIsPlayed()
{
    const QString path = songWith(m_folder.path(), {pictureOf(90 * megabyte)});
    verifyPlays(path);
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    QCOMPARE(picturesIn(path), 1);
    verifyPlays(path);
}

void TestTagPictures::aPictureIsReadBehindVastFieldsOfOthers()
{
    const QByteArray picture = pictureOf(26 * megabyte);
    const QByteArray frames = MediaBytes::frame("PRIV", QByteArray(26 * megabyte, 'x')) +
                              MediaBytes::frame("APIC", QByteArray("\0image/png\0\3\0", 13) + picture);
    const QString path = m_folder.filePath("vast.mp3");
    Playing::setContent(path, MediaBytes::id3v2(frames) + Playing::contentOf(Fixtures::tone("mp3")));
    QVERIFY(AudioFile::read(path).picture == picture);
}

void TestTagPictures::aPictureOfAVastKindIsNone_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("isOne");
    QTest::newRow("as long as it may be") << 64 * 1024 << true;
    QTest::newRow("longer") << 64 * 1024 + 1 << false;
}

void TestTagPictures::aPictureOfAVastKindIsNone()
{
    QFETCH(int, size);
    QFETCH(bool, isOne);
    const QByteArray picture = pictureOf(500);
    const QByteArray block = MediaBytes::big32(3) + MediaBytes::big32(quint32(size)) + "image/png" +
                             QByteArray(size - 9, 'x') + QByteArray(4 + 16, '\0') +
                             MediaBytes::big32(quint32(picture.size())) + picture;
    const QString path = m_folder.filePath("kind.flac");
    Playing::setContent(path, MediaBytes::withBlocks(Playing::contentOf(Fixtures::tone("flac")),
                                                     MediaBytes::flacBlock(6, block)));
    QCOMPARE(AudioFile::read(path).picture, isOne ? picture : QByteArray());
}

QTEST_GUILESS_MAIN(TestTagPictures)
#include "tst_tagpictures.moc"
