// Fingerprints as the services know them: equal to those of fpcalc, the tool that comes with the library.
#include "fixtures.h"
#include "identify/fingerprint.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using audiocore::Cancellation;
using audiocore::Decoding;
using audiocore::Fingerprint;
using audiocore::fingerprintOf;

namespace {
QByteArray run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60000))
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
    void equalsFpcalc_data();
    void equalsFpcalc();
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

QTEST_GUILESS_MAIN(TestFingerprint)
#include "tst_fingerprint.moc"
