// WAV files as other programs leave them are read as others read them; an edit keeps all but the tags, or
// says why there is none.
#include "audiocore/iaudiodecoder.h"
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "mediabytes.h"
#include "sound.h"
#include "wavfixture.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using MediaBytes::little;
using WavFixture::Wav;

namespace {
constexpr int second = 1000;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray tone(const QString& kind)
{
    return contentOf(Fixtures::tone(kind, second));
}
} // namespace

class TestWav : public QObject
{
    Q_OBJECT

private slots:
    void oddFilesAreReadAsOthersDo_data() { addOddFiles(); }
    void oddFilesAreReadAsOthersDo();
    void anEditOfOddFilesKeepsTheRestOrSaysWhyNot_data() { addOddFiles(); }
    void anEditOfOddFilesKeepsTheRestOrSaysWhyNot();
    void soundOfEveryKindIsMeasured_data() { addKinds(); }
    void soundOfEveryKindIsMeasured();
    void soundOfEveryKindIsMeasuredWithoutItsSizes_data() { addKinds(); }
    void soundOfEveryKindIsMeasuredWithoutItsSizes();
    void countsThatCannotBeAreNotBelieved_data();
    void countsThatCannotBeAreNotBelieved();
    void kindsThatNobodyKnowsAreMeasuredByTheirRate();
    void withoutItsKindSoundIsNone_data();
    void withoutItsKindSoundIsNone();

private:
    static void addOddFiles();
    static void addKinds();
    QString file(const QByteArray& bytes) const;

    QTemporaryDir m_folder;
};

QString TestWav::file(const QByteArray& bytes) const
{
    const QString path = m_folder.filePath("song.wav");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qUtf8Printable(path));
    return path;
}

void TestWav::addOddFiles()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("milliseconds");
    QTest::addColumn<QString>("artist");
    QTest::addColumn<QString>("whyNotSaved");
    for (const Wav& wav : WavFixture::odd(tone("wav")) + WavFixture::ofLongSizes(tone("rf64")))
        QTest::newRow(wav.name) << wav.bytes << wav.milliseconds << QString::fromLatin1(wav.artist)
                                << QString::fromLatin1(wav.whyNotSaved);
}

void TestWav::addKinds()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::wavKinds() + QStringList{"rf64", "wav"})
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestWav::oddFilesAreReadAsOthersDo()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, milliseconds);
    QFETCH(QString, artist);
    const QString path = file(bytes);
    const AudioFile::Properties properties = AudioFile::properties(path);
    QCOMPARE(properties.format, int(AUDIO_FORMAT_WAV));
    QCOMPARE(properties.duration, milliseconds);
    QCOMPARE(properties.sampleRate, 44100);
    QCOMPARE(properties.bitRate, 1411200);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), artist);
    const Listening::Figures told = Sound::toldOf(path).figures;
    if (told.rate > 0) {
        QCOMPARE(told.rate, properties.sampleRate);
        QVERIFY2(qAbs(told.seconds * 1000 - milliseconds) <= 1, qPrintable(QString::number(told.seconds)));
    }
}

void TestWav::anEditOfOddFilesKeepsTheRestOrSaysWhyNot()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, artist);
    QFETCH(QString, whyNotSaved);
    const QString path = file(bytes);
    const QByteArray sound = Sound::sumOf(path);
    AudioFile::takeLog();
    const int result = AudioFile::write(path, {{TAG_TITLE, "New"}});
    const QString log = AudioFile::takeLog().join('\n');
    if (!whyNotSaved.isEmpty()) {
        QVERIFY(result != 0);
        QVERIFY2(log.contains("not saved: ") && log.contains(whyNotSaved), qPrintable(log));
        QVERIFY(contentOf(path) == bytes);
        return;
    }
    QVERIFY2(result == 0, qPrintable(log));
    const QByteArray after = contentOf(path);
    const AudioFile::Content content = AudioFile::read(path);
    QCOMPARE(content.texts.value(TAG_TITLE), "New");
    QCOMPARE(content.texts.value(TAG_ARTIST), artist);
    QCOMPARE(Sound::sumOf(path), sound);
    QCOMPARE(after.mid(4, 4), little(quint32(after.size() - 8)));
    // All before the tags, and the sound behind them.
    constexpr int head = 8;
    const int tag = bytes.indexOf("id3 ");
    const int list = bytes.indexOf("INFO") - head;
    QVERIFY(after.mid(head).startsWith(list < 0 ? bytes.mid(head) : bytes.mid(head, list - head)));
    if (const int data = bytes.indexOf("data"); data > tag && tag > 0)
        QVERIFY(after.endsWith(bytes.mid(data)));
}

void TestWav::soundOfEveryKindIsMeasured()
{
    QFETCH(QString, kind);
    const QString path = file(tone(kind));
    const AudioFile::Properties properties = AudioFile::properties(path);
    const Listening::Figures told = Sound::toldOf(path).figures;
    QCOMPARE(properties.format, int(AUDIO_FORMAT_WAV));
    QCOMPARE(properties.sampleRate, told.rate);
    QVERIFY(qAbs(properties.duration - told.seconds * 1000) <= 1);
    QVERIFY2(qAbs(properties.bitRate - told.bitRate) <= told.bitRate / 25,
             qPrintable(QString::number(properties.bitRate)));
    if (kind == "rf64")
        return;
    const QByteArray sound = Sound::sumOf(path);
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, "New"}}), 0);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), "New");
    QCOMPARE(Sound::sumOf(path), sound);
}

void TestWav::soundOfEveryKindIsMeasuredWithoutItsSizes()
{
    QFETCH(QString, kind);
    const QByteArray whole = tone(kind);
    const int length = AudioFile::properties(file(whole)).duration;
    const int count = whole.indexOf("fact");
    for (const quint32 size : {0u, 0xFFFFFFFFu}) {
        QByteArray bytes = WavFixture::sized(whole, size, size).replace("ds64", "JUNK");
        if (count > 0)
            bytes.replace(count + 8, 4, little(size));
        const QString path = file(bytes);
        const AudioFile::Properties properties = AudioFile::properties(path);
        // What the last block holds too much is sound now.
        QVERIFY2(qAbs(properties.duration - length) <= 25, qPrintable(QString::number(properties.duration)));
        QVERIFY(AudioFile::write(path, {{TAG_TITLE, "New"}}) != 0);
        QVERIFY(contentOf(path) == bytes);
    }
}

void TestWav::countsThatCannotBeAreNotBelieved_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<quint32>("count");
    for (const char* kind : {"adpcm", "gsm", "mulaw"})
        for (const quint32 count : {0u, 100u, 10000000u, 0xFFFFFFFFu})
            QTest::addRow("%s, %u", kind, count) << QString::fromLatin1(kind) << count;
}

void TestWav::countsThatCannotBeAreNotBelieved()
{
    QFETCH(QString, kind);
    QFETCH(quint32, count);
    QByteArray bytes = tone(kind);
    bytes.replace(bytes.indexOf("fact") + 8, 4, little(count));
    const int duration = AudioFile::properties(file(bytes)).duration;
    QVERIFY2(qAbs(duration - second) <= 25, qPrintable(QString::number(duration)));
}

void TestWav::kindsThatNobodyKnowsAreMeasuredByTheirRate()
{
    constexpr int kindPlace = 20;
    const AudioFile::Properties properties =
        AudioFile::properties(file(tone("wav").replace(kindPlace, 2, little(quint16(0x1234)))));
    QCOMPARE(properties.duration, second);
    QCOMPARE(properties.sampleRate, 44100);
    QCOMPARE(properties.bitRate, 1411200);
}

void TestWav::withoutItsKindSoundIsNone_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray wav = tone("wav");
    QTest::newRow("no kind") << QByteArray(wav).replace("fmt ", "JUNK");
    QTest::newRow("a kind cut short") << wav.left(30);
    QTest::newRow("no chunk for sound") << QByteArray(wav).replace("data", "JUNK");
    QTest::newRow("a head alone") << wav.left(12);
    QTest::newRow("no rate") << QByteArray(wav).replace(24, 4, little(0u));
}

void TestWav::withoutItsKindSoundIsNone()
{
    QFETCH(QByteArray, bytes);
    const QString path = file(bytes);
    QCOMPARE(AudioFile::properties(path).format, int(AUDIO_FORMAT_UNKNOWN));
    AudioFile::takeLog();
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, "New"}}) != 0);
    QVERIFY(!AudioFile::takeLog().isEmpty());
    QVERIFY(contentOf(path) == bytes);
}

QTEST_GUILESS_MAIN(TestWav)
#include "tst_wav.moc"
