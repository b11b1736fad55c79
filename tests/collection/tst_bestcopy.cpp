#include "collection/bestcopy.h"

#include <QtTest>

Q_DECLARE_METATYPE(BestCopy::Sound)

using BestCopy::Sound;

namespace {
Sound sound(const char* kind, quint64 bitRate, quint64 sampleRate = 44100, quint64 duration = 247000)
{
    return Sound{QString::fromUtf8(kind), bitRate, sampleRate, duration};
}
} // namespace

class TestBestCopy : public QObject
{
    Q_OBJECT

private slots:
    void oneSoundsBetter_data();
    void oneSoundsBetter();
    void neitherSoundsBetter_data();
    void neitherSoundsBetter();
    void theBestOfManyIsFoundWhereverItIs();
    void theFirstOfSeveralBestOnesIsTaken();
    void oneCopyIsNotTheBest();
};

void TestBestCopy::oneSoundsBetter_data()
{
    QTest::addColumn<Sound>("better");
    QTest::addColumn<Sound>("worse");
    const auto row = [](const char* name, const Sound& better, const Sound& worse) {
        QTest::newRow(name) << better << worse;
    };
    // Lossless before lossy, whatever the numbers say.
    row("FLAC and MP3", sound("FLAC", 250, 22050, 1000), sound("MP3", 320));
    row("APE and AAC", sound("APE", 600), sound("AAC", 320, 96000));
    row("WAV and OGG", sound("WAV", 1411), sound("OGG", 500));
    row("Apple Lossless", sound("Apple Lossless audio file", 300), sound("AAC audio file", 320));
    row("AIFF", sound("AIFF audio file", 1411), sound("MPEG audio file", 320));
    row("in another language", sound("WAV-Audiodatei", 1411), sound("MPEG-Audiodatei", 320));
    // What may be either is lossless where nothing lossy has as many bits.
    row("M4A that is lossless", sound("M4A", 700), sound("MP3", 320));
    row("M4A that is lossless, longer", sound("M4A", 530, 44100, 248000), sound("FLAC", 900));
    row("WMA that is lossless", sound("WMA", 720, 44100, 248000), sound("FLAC", 900));
    row("an unknown name", sound("Appleロスレス", 800, 44100, 248000), sound("FLAC", 900));
    row("M4A that is not", sound("FLAC", 900), sound("M4A", 529, 44100, 248000));
    row("M4A of many samples", sound("FLAC", 900, 96000), sound("M4A", 1100, 96000, 248000));
    // The bit rate by what the codec makes of it.
    row("the same codec", sound("MP3", 320), sound("MP3", 256, 48000, 300000));
    row("AAC needs less than MP3", sound("M4A", 256), sound("MP3", 320));
    row("and so much less only", sound("MP3", 320), sound("AAC", 240));
    row("Vorbis needs less", sound("OGG", 160), sound("MP3", 192));
    row("WMA needs a little less", sound("WMA", 128), sound("MP3", 128, 48000, 248000));
    row("and more than AAC", sound("AAC", 128), sound("WMA", 128));
    row("tracks", sound("Purchased AAC audio file", 256), sound("MPEG audio file", 320));
    row("tracks of MPEG-4", sound("AAC audio file", 129), sound("MPEG-4 audio file", 128));
    row("what has none", sound("MP3", 8), sound("MP3", 0, 48000, 248000));
    // Then the sample rate.
    row("more samples", sound("MP3", 192, 48000, 100000), sound("MP3", 192));
    row("more lossless samples", sound("FLAC", 900, 96000, 100000), sound("WAV", 1411));
    // Then the length.
    row("longer", sound("MP3", 192, 44100, 248000), sound("MP3", 192));
    row("longer and lossless", sound("FLAC", 700, 44100, 248000), sound("WAV", 1411));
}

void TestBestCopy::oneSoundsBetter()
{
    QFETCH(Sound, better);
    QFETCH(Sound, worse);
    QCOMPARE(BestCopy::find({better, worse}), 0);
    QCOMPARE(BestCopy::find({worse, better}), 1);
}

void TestBestCopy::neitherSoundsBetter_data()
{
    QTest::addColumn<Sound>("one");
    QTest::addColumn<Sound>("other");
    QTest::newRow("equal copies") << sound("MP3", 192) << sound("MP3", 192);
    QTest::newRow("packed more tightly") << sound("FLAC", 700) << sound("FLAC", 900);
    QTest::newRow("packed and not") << sound("APE", 650) << sound("WAV", 1411);
    QTest::newRow("a blink longer") << sound("MP3", 192, 44100, 247026) << sound("MP3", 192, 44100, 247000);
    QTest::newRow("capitals") << sound("flac", 700) << sound("FLAC", 700);
    QTest::newRow("nothing known") << Sound() << Sound();
}

void TestBestCopy::neitherSoundsBetter()
{
    QFETCH(Sound, one);
    QFETCH(Sound, other);
    QCOMPARE(BestCopy::find({one, other}), -1);
    QCOMPARE(BestCopy::find({other, one}), -1);
}

void TestBestCopy::theBestOfManyIsFoundWhereverItIs()
{
    for (int place = 0; place < 5; ++place) {
        QVector<Sound> copies(5, sound("MP3", 320));
        copies[place] = sound("FLAC", 900);
        QCOMPARE(BestCopy::find(copies), place);
    }
}

void TestBestCopy::theFirstOfSeveralBestOnesIsTaken()
{
    QCOMPARE(BestCopy::find({sound("MP3", 320), sound("FLAC", 800), sound("WAV", 1411)}), 1);
}

void TestBestCopy::oneCopyIsNotTheBest()
{
    QCOMPARE(BestCopy::find({}), -1);
    QCOMPARE(BestCopy::find({sound("FLAC", 900)}), -1);
}

QTEST_APPLESS_MAIN(TestBestCopy)
#include "tst_bestcopy.moc"
