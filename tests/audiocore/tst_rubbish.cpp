#include "audiofile.h"
#include "fixtures.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

/// Whatever a file holds, reading it ends, with something or nothing.
class TestRubbish : public QObject
{
    Q_OBJECT

private slots:
    void cutOffFilesAreRead_data();
    void cutOffFilesAreRead();
    void damagedFilesAreRead_data();
    void damagedFilesAreRead();
    void whatIsNoMusicHasNothing_data();
    void whatIsNoMusicHasNothing();
    void whatIsNoFileHasNothing();
    void hugeLengthsTakeNoMemory();
    void aVastHoleBehindTheHeaderEnds_data();
    void aVastHoleBehindTheHeaderEnds();
    void oneLineTellsWhyAFileHasNothing();
    void longAndOddPathsAreHandled();
    void editsOfRubbishFailAndChangeNothing();

private:
    static void addKinds();
    void verifyNothing(const QString& path) const;

    QTemporaryDir m_folder;
};

namespace {
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void setContent(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

/// The kind's tone with texts and a cover.
QByteArray tagged(const QString& kind, const QString& folder)
{
    const QString path = Fixtures::copyTone(kind, folder, QStringLiteral("tagged"));
    const QByteArray cover = Fixtures::jpeg(120, 120, 3);
    AudioFile::write(path,
                     {{0, QStringLiteral("Title")}, {1, QStringLiteral("Artist")}, {5, QStringLiteral("3")}},
                     &cover);
    return contentOf(path);
}
} // namespace

void TestRubbish::addKinds()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestRubbish::verifyNothing(const QString& path) const
{
    const AudioFile::Content content = AudioFile::read(path);
    QVERIFY(content.texts.isEmpty());
    QVERIFY(content.picture.isEmpty());
    const AudioFile::Properties properties = AudioFile::properties(path);
    QCOMPARE(properties.duration, 0);
    QCOMPARE(properties.format, -1);
    QCOMPARE(properties.sampleRate, 0);
    QCOMPARE(properties.bitRate, 0);
}

void TestRubbish::cutOffFilesAreRead_data()
{
    addKinds();
}

void TestRubbish::cutOffFilesAreRead()
{
    QFETCH(QString, kind);
    const QByteArray whole = tagged(kind, m_folder.path());
    const QString path = m_folder.filePath(QStringLiteral("cut.") + Fixtures::suffixOf(kind));
    for (int length = 0; length < whole.size(); length = length < 64 ? length + 1 : length * 9 / 8) {
        setContent(path, whole.left(length));
        AudioFile::read(path);
        QVERIFY(AudioFile::properties(path).duration >= 0);
    }
}

void TestRubbish::damagedFilesAreRead_data()
{
    addKinds();
}

void TestRubbish::damagedFilesAreRead()
{
    QFETCH(QString, kind);
    const QByteArray whole = tagged(kind, m_folder.path());
    const QString path = m_folder.filePath(QStringLiteral("damaged.") + Fixtures::suffixOf(kind));
    QRandomGenerator random(42);
    for (int round = 0; round < 60; ++round) {
        QByteArray bytes = whole;
        const int reach = round % 2 ? bytes.size() : qMin(2048, bytes.size());
        for (int flips = 0; flips < 1 + round / 4; ++flips)
            bytes[random.bounded(reach)] = char(random.bounded(256));
        setContent(path, bytes);
        AudioFile::read(path);
        QVERIFY(AudioFile::properties(path).duration >= 0);
    }
}

void TestRubbish::whatIsNoMusicHasNothing_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("This is a letter, not a song.\n").repeated(1000);
    QTest::newRow("zeros") << QByteArray(1 << 20, '\0');
    QTest::newRow("ones") << QByteArray(1 << 20, char(0xFF));
    QTest::newRow("a picture") << Fixtures::jpeg(300, 300, 1);
    QTest::newRow("a tag alone") << QByteArray("ID3\x04\0\0\0\0\x02\x01", 10) + QByteArray(257, '\0');
    QTest::newRow("a tag without its end") << QByteArray("ID3\x04\0\0\x7F\x7F\x7F\x7F", 10);
    QTest::newRow("magic alone") << QByteArray("fLaC");
    QTest::newRow("riff of another kind") << QByteArray("RIFF\x24\0\0\0AVI LIST", 16) + QByteArray(200, '\0');
}

void TestRubbish::whatIsNoMusicHasNothing()
{
    QFETCH(QByteArray, bytes);
    for (const QString& kind : Fixtures::formats()) {
        const QString path = m_folder.filePath(QStringLiteral("nothing.") + kind);
        setContent(path, bytes);
        verifyNothing(path);
    }
}

void TestRubbish::whatIsNoFileHasNothing()
{
    const QString folder = m_folder.filePath(QStringLiteral("folder.mp3"));
    QDir().mkpath(folder);
    verifyNothing(folder);
    verifyNothing(m_folder.filePath(QStringLiteral("missing.mp3")));
    const QString dangling = m_folder.filePath(QStringLiteral("dangling.mp3"));
    QFile::link(m_folder.filePath(QStringLiteral("gone.mp3")), dangling);
    verifyNothing(dangling);
    const QString fifo = m_folder.filePath(QStringLiteral("fifo.mp3"));
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    verifyNothing(fifo);
    verifyNothing(QStringLiteral("/dev/zero"));
    verifyNothing(QString());
}

void TestRubbish::hugeLengthsTakeNoMemory()
{
    // A frame that claims two gigabytes, and a picture block that claims sixteen megabytes, in small files.
    const QString mp3 = m_folder.filePath(QStringLiteral("huge.mp3"));
    const QByteArray frame =
        QByteArray("APIC") + QByteArray("\x7F\xFF\xFF\x7F\0\0", 6) + QByteArray(100, 'x');
    setContent(mp3, QByteArray("ID3\x03\0\0\0\0\x01\0", 10) + frame + QByteArray(18, '\0') +
                        contentOf(Fixtures::tone(QStringLiteral("mp3"))));
    AudioFile::read(mp3);
    const QString flac = m_folder.filePath(QStringLiteral("huge.flac"));
    QByteArray bytes = contentOf(Fixtures::tone(QStringLiteral("flac")));
    bytes.insert(42, QByteArray("\x06\xFF\xFF\xFF", 4) + QByteArray(32, '\xFF'));
    setContent(flac, bytes);
    AudioFile::read(flac);
}

void TestRubbish::aVastHoleBehindTheHeaderEnds_data()
{
    addKinds();
}

void TestRubbish::aVastHoleBehindTheHeaderEnds()
{
    QFETCH(QString, kind);
    const QString path = m_folder.filePath(QStringLiteral("vast.") + Fixtures::suffixOf(kind));
    setContent(path, contentOf(Fixtures::tone(kind)).left(30000));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.resize(6ll << 30));
    file.close();
    AudioFile::read(path);
    QVERIFY(AudioFile::properties(path).duration >= 0);
    QFile::remove(path);
}

void TestRubbish::oneLineTellsWhyAFileHasNothing()
{
    AudioFile::takeLog();
    const QString missing = m_folder.filePath(QStringLiteral("missing.mp3"));
    AudioFile::read(missing);
    AudioFile::properties(missing);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains(missing));
}

void TestRubbish::longAndOddPathsAreHandled()
{
    QString deep = m_folder.path();
    for (int i = 0; i < 12; ++i)
        deep += QLatin1Char('/') + QString(100, QLatin1Char('d'));
    QVERIFY(QDir().mkpath(deep));
    const QString path =
        Fixtures::copyTone(QStringLiteral("mp3"), deep, QStringLiteral("weird \"name\" %s $(x) 夜\n"));
    QVERIFY(path.size() > 1000);
    QCOMPARE(AudioFile::write(path, {{0, QStringLiteral("Deep")}}), 0);
    QCOMPARE(AudioFile::read(path).texts.value(0), QStringLiteral("Deep"));
    AudioFile::takeLog();
    QString broken = path;
    broken[broken.size() - 5] = QChar(0xD800); // half a character
    verifyNothing(broken);
    QVERIFY(!AudioFile::takeLog().isEmpty());
}

void TestRubbish::editsOfRubbishFailAndChangeNothing()
{
    const QString path = m_folder.filePath(QStringLiteral("letter.mp3"));
    const QByteArray letter = QByteArray("Dear Ida,\n").repeated(500);
    setContent(path, letter);
    AudioFile::takeLog();
    QVERIFY(AudioFile::write(path, {{0, QStringLiteral("Title")}}) != 0);
    QVERIFY(!AudioFile::takeLog().isEmpty());
    QCOMPARE(contentOf(path), letter);
}

QTEST_GUILESS_MAIN(TestRubbish)
#include "tst_rubbish.moc"
