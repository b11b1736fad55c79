// Ogg files with more in them than one song from its beginning, and with Speex.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "oggfixture.h"
#include "playedandtold.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace Playing;

class TestOgg : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { AudioFile::takeLog(); }
    void allOfItIsRead_data() { addFiles(); }
    void allOfItIsRead();
    void itIsPlayedAndTold_data() { addFiles(); }
    void itIsPlayedAndTold();
    void aSaveKeepsTheSound_data();
    void aSaveKeepsTheSound();
    void whatHasOtherStreamsBesideIsNotWritten_data();
    void whatHasOtherStreamsBesideIsNotWritten();
    void musicWithoutAnEndIsMeasuredByItsPages();
    void theLastPageIsFoundWhereverItBegins();
    void otherSoundIsNotTakenForItsMusic();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    void addFiles() const;
    void make(const QString& name, const QByteArray& bytes);
    void encode(const QString& name, const QStringList& options);

    QTemporaryDir m_folder;
    QStringList m_files;
};

namespace {
const QString title = QStringLiteral("Vinterljus");

QByteArray ran(const QStringList& arguments)
{
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg", QStringList{"-v", "error", "-y"} + arguments);
    if (!ffmpeg.waitForFinished(patience) || ffmpeg.exitCode() != 0)
        qFatal("ffmpeg: %s", ffmpeg.readAllStandardError().constData());
    return ffmpeg.readAllStandardOutput();
}

/// The music of all streams of sound, one behind the other.
QByteArray decoded(const QString& path, int rate)
{
    // FFmpeg 7 has a decoder of its own for Speex, whose sound is twice as long.
    const bool isSpeex = contentOf(path).left(100).contains("Speex   ");
    const QStringList decoder = isSpeex ? QStringList{"-c:a", "libspeex"} : QStringList();
    return ran(decoder + QStringList{"-i", path, "-map", "0:a:0", "-ac", "1", "-ar", QString::number(rate),
                                     "-f", "s16le", "-"});
}

QByteArray tagged(const char* kind)
{
    const QTemporaryDir folder;
    const QString song = Fixtures::copyTone(kind, folder.path());
    if (AudioFile::write(song, {{TAG_TITLE, title}, {TAG_TRACK, "7"}}) != 0)
        qFatal("cannot tag %s", kind);
    return contentOf(song);
}
} // namespace

void TestOgg::make(const QString& name, const QByteArray& bytes)
{
    setContent(path(name + ".ogg"), bytes);
    m_files.append(name);
}

void TestOgg::encode(const QString& name, const QStringList& options)
{
    const QStringList tags{"-metadata",     "title=" + title, "-metadata",     "track=7",
                           "-metadata:s:a", "title=" + title, "-metadata:s:a", "track=7"};
    ran(options + tags + QStringList{path(name + ".ogg")});
    m_files.append(name);
}

void TestOgg::initTestCase()
{
    const QStringList picture{"-f", "lavfi", "-i", "testsrc=duration=3:size=64x48:rate=5"};
    const QString wav = Fixtures::tone("wav");
    encode("Speex", {"-i", wav, "-c:a", "libspeex", "-ar", "16000", "-ac", "1"});
    encode("Theora before Vorbis",
           picture + QStringList{"-i", wav, "-c:v", "libtheora", "-c:a", "libvorbis"});
    encode("VP8 before Opus", picture + QStringList{"-i", wav, "-c:v", "libvpx", "-c:a", "libopus"});
    for (const char* kind : {"ogg", "opus", "oggflac"}) {
        const QByteArray song = tagged(kind);
        const QString name = QLatin1String(kind);
        make(name, song);
        make(name + " cut out", Ogg::late(song, 6615));
        make(name + " beside what says so", Ogg::withSkeleton(song));
    }
    make("Speex cut out", Ogg::late(contentOf(path("Speex.ogg")), 6400));
    const auto behind = [](const char* kind, quint32 serial) {
        return Ogg::renumbered(contentOf(Fixtures::tone(kind)), serial);
    };
    make("music behind music", tagged("ogg") + behind("ogg", 77) + behind("ogg", 78));
    make("music behind music of another kind", tagged("ogg") + behind("opus", 77));
    make("several streams behind music", tagged("ogg") + Ogg::withSkeleton(behind("ogg", 77)));
}

void TestOgg::addFiles() const
{
    QTest::addColumn<QString>("file");
    for (const QString& name : m_files)
        QTest::newRow(qPrintable(name)) << path(name + ".ogg");
}

void TestOgg::allOfItIsRead()
{
    QFETCH(QString, file);
    constexpr int tolerance = 12; // ms, of coders that begin before the sound
    const AudioFile::Content content = AudioFile::read(file);
    QCOMPARE(content.texts.value(TAG_TITLE), title);
    QCOMPARE(content.texts.value(TAG_TRACK), QStringLiteral("7"));
    const AudioFile::Properties properties = AudioFile::properties(file);
    QCOMPARE(properties.format, 5);
    QVERIFY(properties.sampleRate >= 16000);
    const int rate = 16000;
    const qint64 heard = qint64(decoded(file, rate).size()) / 2 * 1000 / rate;
    QVERIFY2(qAbs(properties.duration - heard) <= tolerance,
             qPrintable(QStringLiteral("%1, heard %2").arg(properties.duration).arg(heard)));
    const qint64 average = QFileInfo(file).size() * 8000 / properties.duration;
    QVERIFY2(properties.bitRate <= average && properties.bitRate >= 10000,
             qPrintable(QString::number(properties.bitRate)));
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestOgg::itIsPlayedAndTold()
{
    QFETCH(QString, file);
    playedAndTold(file);
}

void TestOgg::aSaveKeepsTheSound_data()
{
    QTest::addColumn<QString>("file");
    for (const char* name :
         {"Speex", "Speex cut out", "ogg cut out", "opus cut out", "oggflac cut out", "music behind music"})
        QTest::newRow(name) << path(QLatin1String(name) + ".ogg");
}

void TestOgg::aSaveKeepsTheSound()
{
    QFETCH(QString, file);
    const QString copy = path("copy.ogg");
    setContent(copy, contentOf(file));
    const QString longer = title.repeated(2000);
    const QByteArray picture = Fixtures::jpeg(24, 24, 1);
    QCOMPARE(AudioFile::write(copy, {{TAG_TITLE, longer}}, &picture), 0);
    const AudioFile::Content content = AudioFile::read(copy);
    QCOMPARE(content.texts.value(TAG_TITLE), longer);
    QCOMPARE(content.texts.value(TAG_TRACK), QStringLiteral("7"));
    QCOMPARE(content.picture, picture);
    const AudioFile::Properties properties = AudioFile::properties(copy);
    QCOMPARE(properties.duration, AudioFile::properties(file).duration);
    QVERIFY(decoded(copy, 16000) == decoded(file, 16000));
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestOgg::whatHasOtherStreamsBesideIsNotWritten_data()
{
    QTest::addColumn<QString>("file");
    for (const QString& name : m_files)
        if (name.contains("before") || name.contains("beside"))
            QTest::newRow(qPrintable(name)) << path(name + ".ogg");
}

void TestOgg::whatHasOtherStreamsBesideIsNotWritten()
{
    QFETCH(QString, file);
    const QByteArray before = contentOf(file);
    QVERIFY(AudioFile::write(file, {{TAG_TITLE, QStringLiteral("New")}}) != 0);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(
        log.first().endsWith(
            "the tag was not saved: other streams lie between the pages of its music, and would be lost"),
        qPrintable(log.first()));
    QVERIFY(contentOf(file) == before);
}

/// As of a download that broke off.
void TestOgg::musicWithoutAnEndIsMeasuredByItsPages()
{
    QList<Ogg::Page> pages = Ogg::pagesOf(contentOf(Fixtures::tone("opus")));
    while (pages.last().position > 48000 * 2)
        pages.removeLast();
    setContent(path("broken off.ogg"), Ogg::bytesOf(pages) + QByteArray(3000, 'x'));
    const AudioFile::Properties properties = AudioFile::properties(path("broken off.ogg"));
    const qint64 preSkip = qFromLittleEndian<quint16>(pages.first().body.constData() + 10);
    QCOMPARE(qint64(properties.duration), (pages.last().position - preSkip) * 1000 / 48000);
}

/// It is looked for piece by piece from the end.
void TestOgg::theLastPageIsFoundWhereverItBegins()
{
    constexpr int piece = 4096;
    const QByteArray song = contentOf(Fixtures::tone("opus"));
    const QList<Ogg::Page> pages = Ogg::pagesOf(song);
    Ogg::Page last = Ogg::page(pages.first().serial, quint32(pages.size()), Ogg::Last, "packet");
    last.position = pages.last().position + 48000;
    const QByteArray end = Ogg::bytesOf(last);
    const int duration = AudioFile::properties(Fixtures::tone("opus")).duration + 1000;
    for (int before = -1; before <= 5; ++before) { // the end of the last piece
        setContent(path("far.ogg"), song + end + QByteArray(piece + before - end.size(), 'x'));
        QCOMPARE(AudioFile::properties(path("far.ogg")).duration, duration);
    }
}

void TestOgg::otherSoundIsNotTakenForItsMusic()
{
    const QByteArray unknown = Ogg::bytesOf({Ogg::page(1, 0, Ogg::First, "CELT    " + QByteArray(52, '\0')),
                                             Ogg::page(1, 1, Ogg::Last, QByteArray(8, '\0'))});
    setContent(path("unknown.ogg"), unknown);
    QCOMPARE(AudioFile::properties(path("unknown.ogg")).format, -1);
    setContent(path("beside.ogg"), unknown + contentOf(Fixtures::tone("ogg")));
    QCOMPARE(AudioFile::properties(path("beside.ogg")).format, -1);
}

QTEST_MAIN(TestOgg)
#include "tst_ogg.moc"
