// ID3v2 tags with frames in their middle that other programs left empty or broken.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "mediabytes.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

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

/// The ids are those of the newest versions; the oldest one's are its own.
QByteArray frame(int version, const char* id, const QByteArray& body)
{
    if (version > 2)
        return MediaBytes::frame(id, body, 0, char(version));
    static const QHash<QByteArray, QByteArray> oldest = {
        {"TIT2", "TT2"}, {"TPE1", "TP1"}, {"TALB", "TAL"}, {"TCOM", "TCM"}};
    return oldest.value(id, QByteArray(id).left(3)) + MediaBytes::big32(quint32(body.size())).mid(1) + body;
}

QByteArray text(const char* value)
{
    return QByteArray(1, '\0') + value;
}

/// A frame of a composer that says to be so long.
QByteArray frameOfSize(int version, int size)
{
    QByteArray bytes = frame(version, "TCOM", QByteArray(size, 'x'));
    return bytes.left(bytes.size() - size) + text("Composer");
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
    for (const int version : {2, 3, 4}) {
        const auto row = [version](const char* name, const QByteArray& bytes) {
            QTest::addRow("2.%d, %s", version, name) << version << bytes;
        };
        row("empty", frame(version, "TCOM", QByteArray()));
        row("empty, of no known id", frame(version, "ZZZZ", QByteArray()));
        row("an id beyond ASCII", frame(version, "T\xE9XX", text("Composer")));
        row("an id in small letters", frame(version, "tcom", text("Composer")));
        row("a space in the id", frame(version, "T OM", text("Composer")));
        row("several", frame(version, "TCOM", QByteArray()) + frame(version, "\xFF\xFF\xFF\xFF", "x") +
                           frame(version, "APIC", QByteArray()));
    }
    // The highest bits of its bytes say nothing in the newest version.
    QTest::newRow("2.4, a size with high bits")
        << 4 << QByteArray("T\xE9XX\x80\x80\x80\x85\0\0", 10) + QByteArray("\0abcd", 5);
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
    for (const int version : {2, 3, 4}) {
        const auto row = [version](const char* name, const QByteArray& bytes) {
            QTest::addRow("2.%d, %s", version, name) << version << bytes;
        };
        row("a size beyond the tag's end", frameOfSize(version, 5000));
        row("a size a little beyond the tag's end", frameOfSize(version, 100));
        row("an id of zeros", QByteArray(version == 2 ? 6 : 10, '\0'));
        row("words", "words that make no frame");
    }
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
    QByteArray content = contentOf(path);
    constexpr int lastOfSize = 9;
    content[lastOfSize] = char(content.at(lastOfSize) | 0x80);
    write(path, content);
    QVERIFY(AudioFile::read(path).texts.isEmpty());
    QCOMPARE(AudioFile::write(path, {{TAG_ARTIST, QStringLiteral("Artist")}}), 0);
    QCOMPARE(AudioFile::read(path).texts, (QHash<int, QString>{{TAG_ARTIST, QStringLiteral("Artist")}}));
    QVERIFY(contentOf(path).endsWith(content));
}

void TestId3v2::aTagEndsWithItsChunk()
{
    const QByteArray title = frame(4, "TIT2", text("Title"));
    const QByteArray behind = frame(4, "TPE1", text("Artist"));
    const QByteArray tag = MediaBytes::id3v2(title + behind, 4).left(10 + title.size());
    const QString path = m_folder.filePath("song.wav");
    write(path, MediaBytes::withChunks(contentOf(Fixtures::tone(QStringLiteral("wav"), 1000)),
                                       MediaBytes::chunk("id3 ", tag) + behind));
    QCOMPARE(AudioFile::read(path).texts, (QHash<int, QString>{{TAG_TITLE, QStringLiteral("Title")}}));
}

QTEST_GUILESS_MAIN(TestId3v2)
#include "tst_id3v2.moc"
