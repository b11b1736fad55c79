// ID3v2 tags with frames in their middle that other programs left empty or broken.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "mediabytes.h"
#include "oddid3v2.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using OddId3v2::frame;
using OddId3v2::text;

namespace {
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(content) != content.size())
        qFatal("cannot write %s", qUtf8Printable(path));
}
} // namespace

class TestId3v2 : public QObject
{
    Q_OBJECT

private slots:
    void framesBehindOddOnesAreReadAndAllStay_data();
    void framesBehindOddOnesAreReadAndAllStay();
    void whatComesBehindTheLastFrameIsNotReadAndStays_data();
    void whatComesBehindTheLastFrameIsNotReadAndStays();
    void anEmptyFrameOfAFieldIsReplaced();
    void aTagOfEmptyFramesAloneIsOne();
    void aTagOfASizeThatNoneHasIsNone();
    void aTagBehindRubbishIsWrittenThere();
    void aTagEndsWithItsChunk();

private:
    QString song(const QByteArray& frames, int version);

    QTemporaryDir m_folder;
};

QString TestId3v2::song(const QByteArray& frames, int version)
{
    const QString path = m_folder.filePath("song.mp3");
    write(path,
          MediaBytes::id3v2(frames, char(version)) + contentOf(Fixtures::tone(QStringLiteral("mp3"), 1000)));
    return path;
}

void TestId3v2::framesBehindOddOnesAreReadAndAllStay_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QByteArray>("odd");
    for (const OddId3v2::Frames& odd : OddId3v2::passedOver())
        QTest::newRow(odd.name) << odd.version << odd.bytes;
}

void TestId3v2::framesBehindOddOnesAreReadAndAllStay()
{
    QFETCH(int, version);
    QFETCH(QByteArray, odd);
    const QByteArray title = frame(version, "TIT2", text("Title"));
    const QByteArray artist = frame(version, "TPE1", text("Artist"));
    const QByteArray album = frame(version, "TALB", text("Album"));
    const QString path = song(title + odd + artist + odd + album, version);
    const QHash<int, QString> texts = {
        {TAG_TITLE, QStringLiteral("Title")}, {TAG_ARTIST, "Artist"}, {TAG_ALBUM, "Album"}};
    QCOMPARE(AudioFile::read(path).texts, texts);

    QCOMPARE(AudioFile::write(path, {{TAG_ARTIST, QStringLiteral("Someone else")}}), 0);
    QVERIFY(
        contentOf(path).contains(title + odd + frame(version, "TPE1", text("Someone else")) + odd + album));
    QCOMPARE(AudioFile::write(path, {{TAG_GENRE, QStringLiteral("Pop")}}), 0);
    QVERIFY(
        contentOf(path).contains(title + odd + frame(version, "TPE1", text("Someone else")) + odd + album));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ALBUM), QStringLiteral("Album"));
}

void TestId3v2::whatComesBehindTheLastFrameIsNotReadAndStays_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QByteArray>("end");
    for (const OddId3v2::Frames& end : OddId3v2::ends())
        QTest::newRow(end.name) << end.version << end.bytes;
}

void TestId3v2::whatComesBehindTheLastFrameIsNotReadAndStays()
{
    QFETCH(int, version);
    QFETCH(QByteArray, end);
    const QByteArray rest = end + frame(version, "TPE1", text("Artist")) + QByteArray(30, '\0');
    const QString path = song(frame(version, "TIT2", text("Title")) + rest, version);
    QCOMPARE(AudioFile::read(path).texts, (QHash<int, QString>{{TAG_TITLE, QStringLiteral("Title")}}));
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    QVERIFY(contentOf(path).contains(frame(version, "TIT2", text("New")) + rest));
}

void TestId3v2::anEmptyFrameOfAFieldIsReplaced()
{
    const QByteArray artist = frame(4, "TPE1", text("Artist"));
    const QString path = song(frame(4, "TIT2", QByteArray()) + artist, 4);
    QCOMPARE(AudioFile::read(path).texts, (QHash<int, QString>{{TAG_ARTIST, QStringLiteral("Artist")}}));
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    QVERIFY(contentOf(path).contains(frame(4, "TIT2", text("New")) + artist));
}

void TestId3v2::aTagOfEmptyFramesAloneIsOne()
{
    const QByteArray empty = frame(3, "TIT2", QByteArray()) + frame(3, "TPE1", QByteArray());
    const QString path = song(empty, 3);
    QVERIFY(AudioFile::read(path).texts.isEmpty());
    QCOMPARE(AudioFile::write(path, {{TAG_ALBUM, QStringLiteral("New")}}), 0);
    QVERIFY(contentOf(path).contains(empty + frame(3, "TALB", text("New"))));
}

void TestId3v2::aTagOfASizeThatNoneHasIsNone()
{
    const QString path = song(frame(4, "TIT2", text("Title")), 4);
    const QByteArray content = OddId3v2::ofNoSize(contentOf(path));
    write(path, content);
    QVERIFY(AudioFile::read(path).texts.isEmpty());
    QCOMPARE(AudioFile::write(path, {{TAG_ARTIST, QStringLiteral("Artist")}}), 0);
    QCOMPARE(AudioFile::read(path).texts, (QHash<int, QString>{{TAG_ARTIST, QStringLiteral("Artist")}}));
    QVERIFY(contentOf(path).endsWith(content));
}

void TestId3v2::aTagBehindRubbishIsWrittenThere()
{
    const QString path = song(frame(4, "TIT2", text("Title")), 4);
    const QByteArray rubbish(300, 'x');
    const QByteArray before = rubbish + contentOf(path);
    write(path, before);
    QCOMPARE(AudioFile::read(path).texts, (QHash<int, QString>{{TAG_TITLE, QStringLiteral("Title")}}));
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}), 0);
    QCOMPARE(AudioFile::read(path).texts, (QHash<int, QString>{{TAG_TITLE, QStringLiteral("New")}}));
    QVERIFY(contentOf(path).startsWith(rubbish + "ID3"));
    QCOMPARE(contentOf(path).count("ID3"), before.count("ID3"));
}

void TestId3v2::aTagEndsWithItsChunk()
{
    const QByteArray title = frame(4, "TIT2", text("Title"));
    const QByteArray behind = frame(4, "TPE1", text("Artist"));
    const QString path = m_folder.filePath("song.wav");
    write(path, MediaBytes::withChunks(contentOf(Fixtures::tone(QStringLiteral("wav"), 1000)),
                                       OddId3v2::chunkBefore(title, behind)));
    QCOMPARE(AudioFile::read(path).texts, (QHash<int, QString>{{TAG_TITLE, QStringLiteral("Title")}}));
}

QTEST_GUILESS_MAIN(TestId3v2)
#include "tst_id3v2.moc"
