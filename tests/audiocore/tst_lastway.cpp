// Files of the eight formats that nobody but libavformat reads.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "foreignfixture.h"
#include "playedandtold.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace Playing;

class TestLastWay : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { AudioFile::takeLog(); }
    void theyAreReadAsOthersReadThem_data() { addFiles(); }
    void theyAreReadAsOthersReadThem();
    void theyArePlayedAndTold_data() { addFiles(); }
    void theyArePlayedAndTold();
    void theyAreNotWritten_data() { addFiles(); }
    void theyAreNotWritten();
    void picturesAreRead();
    void referencesToOtherFilesAreNone();
    void whatIsNoneOfTheFormatsStaysUnknown_data();
    void whatIsNoneOfTheFormatsStaysUnknown();

private:
    struct Known
    {
        QString name;
        int format;
        bool hasTags;
    };

    QString path(const QString& name) const { return m_folder.filePath(name); }
    void addFiles() const;
    void make(const QString& name, int format, const QByteArray& bytes);
    QString encode(const QString& name, const QStringList& options) const;

    QTemporaryDir m_folder;
    QList<Known> m_files;
};

namespace {
constexpr int wav = 0;
constexpr int aac = 3;
constexpr int m4a = 4;
const QString title = QStringLiteral("Vinterljus");

QByteArray ran(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(patience) || process.exitCode() != 0)
        qFatal("%s: %s", qUtf8Printable(program), process.readAllStandardError().constData());
    return process.readAllStandardOutput();
}

/// An entry of the first sound, or else of the file.
QString byFfprobe(const QString& path, const QString& entry)
{
    return QString::fromUtf8(ran("ffprobe", {"-v", "error", "-select_streams", "a:0", "-show_entries",
                                             "stream=" + entry + ":stream_tags=" + entry +
                                                 ":format=" + entry + ":format_tags=" + entry,
                                             "-of", "default=nw=1:nk=1", path}))
        .section('\n', 0, 0);
}

qint64 heardMilliseconds(const QString& path)
{
    return ran("ffmpeg",
               {"-v", "error", "-i", path, "-map", "0:a:0", "-ac", "1", "-ar", "8000", "-f", "s16le", "-"})
               .size() /
           16;
}
} // namespace

void TestLastWay::make(const QString& name, int format, const QByteArray& bytes)
{
    setContent(path(name), bytes);
    m_files.append({name, format, true});
}

QString TestLastWay::encode(const QString& name, const QStringList& options) const
{
    ran("ffmpeg",
        QStringList{"-v", "error", "-y", "-i", Fixtures::tone("wav"), "-metadata", "title=" + title} +
            options + QStringList{path(name)});
    return path(name);
}

void TestLastWay::initTestCase()
{
    setContent(path("turned numbers.wav"), Foreign::rifx(3000));
    m_files.append({"turned numbers.wav", wav, false});
    encode("wave 64.wav", {"-f", "w64"});
    m_files.append({"wave 64.wav", wav, false});
    encode("the other wrapping.aac", {"-c:a", "aac", "-f", "latm"});
    m_files.append({"the other wrapping.aac", aac, false});
    const QByteArray movie = contentOf(encode("movie.m4a", {"-c:a", "aac", "-f", "mov"}));
    make("without a first atom.m4a", m4a, QByteArray(movie).replace(movie.indexOf("ftyp"), 4, "free"));
    const QByteArray front =
        contentOf(encode("front.m4a", {"-c:a", "alac", "-f", "mov", "-movflags", "faststart"}));
    make("sound behind all else.m4a", m4a, QByteArray(front).replace(front.indexOf("ftyp"), 4, "skip"));
}

void TestLastWay::addFiles() const
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("format");
    QTest::addColumn<bool>("hasTags");
    for (const Known& known : m_files)
        QTest::newRow(qPrintable(known.name)) << path(known.name) << known.format << known.hasTags;
}

void TestLastWay::theyAreReadAsOthersReadThem()
{
    QFETCH(QString, file);
    QFETCH(int, format);
    QFETCH(bool, hasTags);
    constexpr int frame = 24; // ms, of AAC
    const AudioFile::Properties properties = AudioFile::properties(file);
    QCOMPARE(properties.format, format);
    QCOMPARE(properties.sampleRate, byFfprobe(file, "sample_rate").toInt());
    QVERIFY2(qAbs(properties.duration - heardMilliseconds(file)) <= frame,
             qPrintable(QString::number(properties.duration)));
    const qint64 average = QFileInfo(file).size() * 8000 / properties.duration;
    QVERIFY2(properties.bitRate <= average * 1.02 && properties.bitRate >= average * 0.9,
             qPrintable(QStringLiteral("%1 of %2").arg(properties.bitRate).arg(average)));
    QCOMPARE(AudioFile::read(file).texts.value(TAG_TITLE), hasTags ? title : QString());
    QCOMPARE(AudioFile::read(file).texts.value(TAG_TITLE), byFfprobe(file, "title"));
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLastWay::theyArePlayedAndTold()
{
    QFETCH(QString, file);
    playedAndTold(file);
}

void TestLastWay::theyAreNotWritten()
{
    QFETCH(QString, file);
    const QByteArray before = contentOf(file);
    const QByteArray picture = Fixtures::jpeg(24, 24, 1);
    QVERIFY(AudioFile::write(file, {{TAG_TITLE, QStringLiteral("New")}}, &picture) != 0);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().endsWith("the tag was not saved: files of its kind can be read and not written"),
             qPrintable(log.first()));
    QVERIFY(contentOf(file) == before);
}

void TestLastWay::picturesAreRead()
{
    const QByteArray picture = Fixtures::jpeg(64, 64, 2);
    const QByteArray frames =
        MediaBytes::frame("TPE1", "\3Artist", 0, 4) +
        MediaBytes::frame("APIC", QByteArray("\0image/jpeg\0\4\0", 14) + Fixtures::jpeg(8, 8, 1)) +
        MediaBytes::frame("APIC", QByteArray("\0image/jpeg\0\3\0", 14) + picture);
    setContent(path("picture.wav"), Foreign::rifx(500, MediaBytes::id3v2(frames)));
    const AudioFile::Content content = AudioFile::read(path("picture.wav"));
    QCOMPARE(content.texts.value(TAG_ARTIST), QStringLiteral("Artist"));
    QCOMPARE(content.picture, picture);
}

/// Whatever stands in a file, no other one is opened.
void TestLastWay::referencesToOtherFilesAreNone()
{
    const QByteArray list = "#EXTM3U\n#EXTINF:3,Song\n" + Fixtures::tone("wav").toUtf8() + '\n';
    const QByteArray wide("\0\0\0\x08wide", 8);
    for (const QByteArray& before : {QByteArray(), QByteArray("RIFX\xFF\xFF\xFF\xFFWAVE"), wide}) {
        setContent(path("list.wav"), before + list);
        QCOMPARE(AudioFile::properties(path("list.wav")).format, -1);
    }
}

void TestLastWay::whatIsNoneOfTheFormatsStaysUnknown_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("Matroska") << QStringList{"-c:a", "flac", "-f", "matroska"};
    QTest::newRow("AIFF") << QStringList{"-f", "aiff"};
    QTest::newRow("CAF") << QStringList{"-f", "caf"};
}

void TestLastWay::whatIsNoneOfTheFormatsStaysUnknown()
{
    QFETCH(QStringList, options);
    const QString file = encode("other.wav", options);
    QCOMPARE(AudioFile::properties(file).format, -1);
    QVERIFY(AudioFile::read(file).texts.isEmpty());
}

QTEST_GUILESS_MAIN(TestLastWay)
#include "tst_lastway.moc"
