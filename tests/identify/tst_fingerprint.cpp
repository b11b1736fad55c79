// Fingerprints as the services know them: equal to those of fpcalc, the tool that comes with the library.
#include "audiocore/soundprint.h"
#include "audiofile.h"
#include "fixtures.h"
#include "identify/fingerprint.h"
#include "latency.h"
#include "noisyape.h"
#include "sanitized.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <cstdint>
#include <vector>

using audiocore::Cancellation;
using audiocore::Decoding;
using audiocore::Fingerprint;
using audiocore::fingerprintOf;

namespace {
QByteArray run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(patience))
        qFatal("%s does not end", qUtf8Printable(program));
    return process.readAllStandardOutput();
}

QString byFpcalc(const QString& path)
{
    return QString::fromLatin1(run("fpcalc", {"-plain", path}).trimmed());
}

/// fpcalc decodes one frame of each APE packet and passes over the others: it judges the same samples as WAV.
QString byFpcalcThroughWav(const QString& path)
{
    const QTemporaryDir folder;
    const QString wav = folder.filePath("decoded.wav");
    run("ffmpeg", {"-v", "error", "-i", path, wav});
    return byFpcalc(wav);
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qUtf8Printable(path));
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Fingerprint ours(const QString& path)
{
    const Cancellation never;
    return fingerprintOf(path.toStdString(), never);
}
} // namespace

class TestFingerprint : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { AudioFile::takeLog(); }
    void equalsFpcalc_data();
    void equalsFpcalc();
    void itsValuesEqualThoseOfFpcalc();
    void anApeThatIsToBeHeardEqualsFpcalc();
    void theShapeOfTheSoundMayChangeOnTheWay();
    void damagedFilesEndWell_data();
    void damagedFilesEndWell();
    void aBrokenPartIsPassedOver();
    void vastRubbishEndsSoon_data();
    void vastRubbishEndsSoon();
    void whatIsGivenUpHasNoValues();
    void aLengthThatNobodyTellsIsMeasured_data();
    void aLengthThatNobodyTellsIsMeasured();
    void onlyTheFormatsOfMusicCollectionsAreRead();
};

void TestFingerprint::equalsFpcalc_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("milliseconds");
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds()) {
        // fpcalc loses the end of WMA: there the fingerprint has to end before the file does.
        const int milliseconds = kind == "wma" ? 125000 : 20000;
        QTest::addRow("%s, %d s", qPrintable(kind), milliseconds / 1000) << kind << milliseconds;
    }
    QTest::newRow("mp3, more than two minutes") << "mp3" << 125000;
    QTest::newRow("ape, more than two minutes") << "ape" << 125000;
}

void TestFingerprint::equalsFpcalc()
{
    QFETCH(QString, kind);
    QFETCH(int, milliseconds);
    const QString path = Fixtures::tone(kind, milliseconds);
    const Fingerprint fingerprint = ours(path);
    QCOMPARE(int(fingerprint.result), int(Decoding::Done));
    QVERIFY(!fingerprint.text.empty());
    const QString expected = kind == "ape" ? byFpcalcThroughWav(path) : byFpcalc(path);
    QCOMPARE(QString::fromStdString(fingerprint.text), expected);
    QVERIFY(qAbs(fingerprint.milliseconds - milliseconds) < 100);
}

void TestFingerprint::itsValuesEqualThoseOfFpcalc()
{
    const QString path = Fixtures::tone("flac", 20000);
    QByteArrayList values;
    const Cancellation never;
    const audiocore::RawFingerprint made = audiocore::rawFingerprintOf(path.toStdString(), never);
    for (const std::uint32_t value : made.values)
        values.append(QByteArray::number(value));
    QCOMPARE(values.join(','), run("fpcalc", {"-raw", "-plain", path}).trimmed());
    std::vector<std::uint32_t> asked;
    std::atomic<bool> isCancelled{false};
    QCOMPARE(int(MakeSoundPrint(QFile::encodeName(path).constData(), isCancelled, asked)),
             int(SOUND_PRINT_MADE));
    QVERIFY(asked == made.values);
    isCancelled = true;
    QCOMPARE(int(MakeSoundPrint(QFile::encodeName(path).constData(), isCancelled, asked)),
             int(SOUND_PRINT_CANCELLED));
    isCancelled = false;
    QCOMPARE(int(MakeSoundPrint("/nowhere/song.mp3", isCancelled, asked)), int(SOUND_PRINT_NO_FILE));
    const QString blink = Fixtures::tone("flac", 500);
    QCOMPARE(int(MakeSoundPrint(QFile::encodeName(blink).constData(), isCancelled, asked)),
             int(SOUND_PRINT_TOO_SHORT));
}

void TestFingerprint::anApeThatIsToBeHeardEqualsFpcalc()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("noise.ape");
    write(path, Fixtures::noisyApe(20000));
    const Fingerprint fingerprint = ours(path);
    QCOMPARE(int(fingerprint.result), int(Decoding::Done));
    QCOMPARE(QString::fromStdString(fingerprint.text), byFpcalcThroughWav(path));
    QVERIFY(fingerprint.text != ours(Fixtures::tone("ape", 20000)).text);
    QCOMPARE(fingerprint.milliseconds, qint64(20000));
}

void TestFingerprint::theShapeOfTheSoundMayChangeOnTheWay()
{
    // Half the rate and one channel in the middle, then as before.
    const QTemporaryDir folder;
    const QString mono = folder.filePath("mono.mp3");
    const QString path = folder.filePath("mixed.mp3");
    const QString stereo = Fixtures::tone("mp3", 5000);
    run("ffmpeg", {"-v", "error", "-i", stereo, "-ac", "1", "-ar", "22050", "-f", "mp3", mono});
    write(path, contentOf(stereo) + contentOf(mono) + contentOf(stereo));
    std::size_t samples = 0;
    const Cancellation never;
    const audiocore::DecodedPart part =
        audiocore::decodeBeginning(path.toStdString(), 120, 11025, never,
                                   [&samples](const std::int16_t*, std::size_t count) { samples += count; });
    QCOMPARE(int(part.result), int(Decoding::Done));
    QVERIFY2(samples > 14.5 * 11025 && samples < 15.5 * 11025, qPrintable(QString::number(samples)));
}

void TestFingerprint::damagedFilesEndWell_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestFingerprint::damagedFilesEndWell()
{
    QFETCH(QString, kind);
    const QTemporaryDir folder;
    const QString path = folder.filePath("song." + Fixtures::suffixOf(kind));
    const QByteArray whole = kind == "ape" ? Fixtures::noisyApe(5000) : contentOf(Fixtures::tone(kind, 5000));
    quint32 random = 1;
    constexpr int rounds = 40;
    for (int i = 0; i < rounds; i += sanitized ? 5 : 1) {
        QByteArray damaged = whole;
        if (i % 4 == 0)
            damaged.truncate(whole.size() * i / rounds);
        for (int flips = 0; flips < i; ++flips) {
            random = random * 1664525 + 1013904223;
            // Half of them near the beginning, where the headers are.
            const quint32 place = (random >> 8) % quint32(flips % 2 ? 512 : whole.size());
            if (int(place) < damaged.size())
                damaged[int(place)] = char(random >> 16);
        }
        write(path, damaged);
        const Fingerprint fingerprint = ours(path);
        QVERIFY(fingerprint.result == Decoding::Done || fingerprint.result == Decoding::NoAudio);
    }
}

void TestFingerprint::aBrokenPartIsPassedOver()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("song.mp3");
    QByteArray content = contentOf(Fixtures::tone("mp3", 20000));
    const int begin = content.size() / 4;
    content.replace(begin, begin, QByteArray(begin, '\x55'));
    write(path, content);
    const Fingerprint fingerprint = ours(path);
    QCOMPARE(int(fingerprint.result), int(Decoding::Done));
    QVERIFY(!fingerprint.text.empty());
}

void TestFingerprint::vastRubbishEndsSoon_data()
{
    damagedFilesEndWell_data();
}

void TestFingerprint::vastRubbishEndsSoon()
{
    // Gathered without a bound, so much of nothing ends the program in the decoding library.
    QFETCH(QString, kind);
    const QTemporaryDir folder;
    const QString path = folder.filePath("song." + Fixtures::suffixOf(kind));
    write(path, contentOf(Fixtures::tone(kind, 5000)).left(30000));
    QVERIFY(QFile::resize(path, qint64(4) << 30));
    Fingerprint fingerprint;
    const qint64 used = processorMillisecondsOf([&] { fingerprint = ours(path); });
    QVERIFY(fingerprint.result == Decoding::Done || fingerprint.result == Decoding::NoAudio);
    QVERIFY2(used < 10000, qPrintable(QString::number(used)));
}

/// Those of the beginning alone might be believed for good.
void TestFingerprint::whatIsGivenUpHasNoValues()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("song.mp3");
    write(path, contentOf(Fixtures::tone("mp3", 20000)));
    const Cancellation never;
    QVERIFY(!audiocore::rawFingerprintOf(path.toStdString(), never).values.empty());
    QVERIFY(QFile::resize(path, qint64(4) << 30));
    QCOMPARE(int(ours(path).result), int(Decoding::Done));
    const audiocore::RawFingerprint made = audiocore::rawFingerprintOf(path.toStdString(), never);
    QCOMPARE(int(made.result), int(Decoding::NoAudio));
    QVERIFY(made.values.empty());
}

void TestFingerprint::aLengthThatNobodyTellsIsMeasured_data()
{
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("20 s") << 20000;
    QTest::newRow("more than two minutes") << 125000;
}

void TestFingerprint::aLengthThatNobodyTellsIsMeasured()
{
    // What is encoded on the way through a pipe cannot tell its length at the beginning.
    QFETCH(int, milliseconds);
    const QTemporaryDir folder;
    const QString path = folder.filePath("streamed.flac");
    write(path,
          run("ffmpeg", {"-v", "error", "-i", Fixtures::tone("flac", milliseconds), "-f", "flac", "-"}));
    const Fingerprint fingerprint = ours(path);
    QCOMPARE(int(fingerprint.result), int(Decoding::Done));
    QCOMPARE(QString::fromStdString(fingerprint.text), byFpcalc(path));
    QVERIFY2(qAbs(fingerprint.milliseconds - milliseconds) < 100,
             qPrintable(QString::number(fingerprint.milliseconds)));
}

void TestFingerprint::onlyTheFormatsOfMusicCollectionsAreRead()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("song.mka");
    run("ffmpeg", {"-v", "error", "-i", Fixtures::tone("flac", 5000), "-c", "copy", path});
    QVERIFY(QFile::exists(path));
    QCOMPARE(int(ours(path).result), int(Decoding::NoAudio));
}

QTEST_GUILESS_MAIN(TestFingerprint)
#include "tst_fingerprint.moc"
