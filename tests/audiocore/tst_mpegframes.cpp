// What is a stream of MPEG frames and how long it plays, by frames made by hand.
#include "base/filebytes.h"
#include "media/checkedstream.h"
#include "media/mpegframes.h"
#include "mediabytes.h"

#include <QtTest>

#include <cstring>

using audiocore::CheckedStream;
using audiocore::MpegStream;
using MediaBytes::big32;

class TestMpegFrames : public QObject
{
    Q_OBJECT

private slots:
    void everyKindOfFrameIsWalked_data();
    void everyKindOfFrameIsWalked();
    void headsThatAreNone_data();
    void headsThatAreNone();
    void framesOfOneStreamFollowOneAnother_data();
    void framesOfOneStreamFollowOneAnother();
    void framesAreLookedForSoFar();
    void theHeadTellsTheLength_data();
    void theHeadTellsTheLength();
    void countsThatCannotBeAreNotBelieved();
    void whatTheEncoderAddedIsNoMusic();
    void theOtherHeadTellsTheLengthToo();
    void whatIsNoFrameIsPassedOver_data();
    void whatIsNoFrameIsPassedOver();
    void ofVeryLongStreamsTheRestIsAsItWas();
    void blocksOfRawAacAreCounted();
    void framesOfRawAacHoldTheirHead();
};

namespace {
constexpr int nearby = 64 * 1024;
constexpr int all = 1024 * 1024;

/// What an MP3 frame's head says: 128 kbit/s and 44100 Hz in the commonest kind where nothing else is asked
/// for.
struct Head
{
    int version = 3; // 1
    int layer = 1;   // III
    int bitRate = 9;
    int rate = 0;
    int padding = 0;
    int channels = 0;

    QByteArray bytes() const
    {
        QByteArray head(4, '\xFF');
        head[1] = char(0xE1 | version << 3 | layer << 1);
        head[2] = char(bitRate << 4 | rate << 2 | padding << 1);
        head[3] = char(channels << 6);
        return head;
    }
};

constexpr int usualSize = 417;

QByteArray frame(const Head& head = {}, int size = usualSize)
{
    return head.bytes().leftJustified(size, '\0');
}

Head otherRate()
{
    Head head;
    head.rate = 1;
    return head;
}

MpegStream measured(const QByteArray& bytes, long begin = 0)
{
    base::MemoryFile file(bytes.toStdString());
    CheckedStream stream(file, "stream", CheckedStream::Mode::Read);
    return audiocore::measureMp3(stream, begin);
}

bool isFound(const QByteArray& bytes, long begin = 0, long length = all)
{
    base::MemoryFile file(bytes.toStdString());
    CheckedStream stream(file, "stream", CheckedStream::Mode::Read);
    return audiocore::findsMp3(stream, begin, length);
}

MpegStream measuredAac(const QByteArray& bytes)
{
    base::MemoryFile file(bytes.toStdString());
    CheckedStream stream(file, "stream", CheckedStream::Mode::Read);
    return audiocore::measureAdts(stream, 0);
}

/// The head of raw AAC at 44100 Hz.
QByteArray adts(int size, int blocks = 1, int rate = 4)
{
    QByteArray frame(qMax(size, 7), '\0');
    frame[0] = char(0xFF);
    frame[1] = char(0xF1);
    frame[2] = char(0x40 | rate << 2);
    frame[3] = char(size >> 11);
    frame[4] = char(size >> 3);
    frame[5] = char((size & 7) << 5);
    frame[6] = char(blocks - 1);
    return frame;
}

/// A frame that tells how many follow; `place` of what it tells is behind its side information.
QByteArray telling(const Head& head, int size, int place, const QByteArray& said)
{
    return frame(head, size).replace(place, said.size(), said);
}

qint64 milliseconds(qint64 samples, int rate = 44100)
{
    return samples * 1000 / rate;
}

/// As many frames as fill the size, made where they are read.
class EndlessFrames final : public base::FileBytes
{
public:
    EndlessFrames(const QByteArray& frame, int before, qint64 size)
        : m_frames(frame.repeated(1000)), m_before(before), m_size(size)
    {
    }

    std::optional<std::int64_t> size() const override { return m_size; }
    std::size_t readAt(std::int64_t offset, void* bytes, std::size_t count) const override
    {
        const auto most = std::size_t(qBound(qint64(0), m_size - qint64(offset), qint64(count)));
        for (std::size_t done = 0; done < most;) {
            const qint64 place = qint64(offset) + qint64(done) - m_before;
            const qint64 begin = place < 0 ? 0 : place % m_frames.size();
            const auto run =
                std::size_t(qMin(qint64(most - done), place < 0 ? -place : m_frames.size() - begin));
            if (place < 0)
                std::memset(static_cast<char*>(bytes) + done, 0, run);
            else
                std::memcpy(static_cast<char*>(bytes) + done, m_frames.constData() + begin, run);
            done += run;
        }
        return most;
    }
    std::size_t writeAt(std::int64_t, const void*, std::size_t) override { return 0; }
    bool isHole(std::int64_t, std::int64_t) const override { return false; }
    bool makeHole(std::int64_t, std::int64_t) override { return false; }
    bool truncateTo(std::int64_t) override { return false; }
    bool sync() override { return false; }

private:
    const QByteArray m_frames;
    const int m_before;
    const qint64 m_size;
};
} // namespace

void TestMpegFrames::everyKindOfFrameIsWalked_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<int>("samples");
    QTest::addColumn<int>("rate");
    const auto row = [](const char* name, const Head& head, int size, int samples, int rate) {
        QTest::newRow(name) << frame(head, size) << samples << rate;
    };
    // Sizes are those that the standard's formulas give.
    row("1, I, 448", {3, 3, 14, 0, 0, 0}, 484, 384, 44100);
    row("1, I, filled up", {3, 3, 14, 0, 1, 0}, 488, 384, 44100);
    row("1, II, 384", {3, 2, 14, 1, 0, 0}, 1152, 1152, 48000);
    row("1, II, 32", {3, 2, 1, 1, 0, 0}, 96, 1152, 48000);
    row("1, III, 128", {3, 1, 9, 0, 0, 0}, 417, 1152, 44100);
    row("1, III, filled up", {3, 1, 9, 0, 1, 0}, 418, 1152, 44100);
    row("1, III, 320, mono", {3, 1, 14, 2, 0, 3}, 1440, 1152, 32000);
    row("2, I, 256", {2, 3, 14, 0, 0, 0}, 556, 384, 22050);
    row("2, II, 160", {2, 2, 14, 1, 0, 0}, 960, 1152, 24000);
    row("2, III, 64", {2, 1, 8, 0, 0, 0}, 208, 576, 22050);
    row("2.5, III, 8", {0, 1, 1, 2, 0, 0}, 72, 576, 8000);
    row("2.5, III, 160", {0, 1, 14, 0, 0, 0}, 1044, 576, 11025);
}

void TestMpegFrames::everyKindOfFrameIsWalked()
{
    QFETCH(QByteArray, frame);
    QFETCH(int, samples);
    QFETCH(int, rate);
    constexpr int count = 300; // far over one block that is read
    const MpegStream stream = measured(frame.repeated(count));
    QCOMPARE(int(stream.sampleRate), rate);
    QCOMPARE(qint64(stream.milliseconds), milliseconds(qint64(count) * samples, rate));
    const qint64 bits = qint64(frame.size()) * count * 8000 / stream.milliseconds;
    QCOMPARE(qint64(stream.bitsPerSecond), bits);
}

void TestMpegFrames::headsThatAreNone_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("no such version") << Head{1, 1, 9, 0, 0, 0}.bytes();
    QTest::newRow("no layer") << Head{3, 0, 9, 0, 0, 0}.bytes();
    QTest::newRow("no bit rate") << Head{3, 1, 0, 0, 0, 0}.bytes();
    QTest::newRow("no such bit rate") << Head{3, 1, 15, 0, 0, 0}.bytes();
    QTest::newRow("no such rate") << Head{3, 1, 9, 3, 0, 0}.bytes();
    QTest::newRow("another first byte") << Head().bytes().replace(0, 1, "\xFE");
    QTest::newRow("too few bits in the second") << Head().bytes().replace(1, 1, "\xDB");
}

void TestMpegFrames::headsThatAreNone()
{
    QFETCH(QByteArray, head);
    QVERIFY(isFound(frame().repeated(4)));
    const QByteArray none = head.leftJustified(usualSize, '\0');
    QVERIFY(!isFound(none.repeated(4)));
    // As the second one, too.
    QVERIFY(!isFound(frame() + none));
}

void TestMpegFrames::framesOfOneStreamFollowOneAnother_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isStream");
    const QByteArray other(usualSize, '\0');
    const QByteArray far(nearby, '\0');
    const QByteArray near(nearby - 1, '\0');
    Head louder;
    louder.bitRate = 14;
    QTest::newRow("two") << frame().repeated(2) + other << true;
    QTest::newRow("one") << frame() + other << false;
    QTest::newRow("the last one") << other + frame() << true;
    QTest::newRow("the last one, cut") << other + frame().chopped(1) << false;
    QTest::newRow("the second one cut") << frame() + frame().left(4) << true;
    QTest::newRow("the second one cut in its head") << frame() + frame().left(3) << false;
    QTest::newRow("another bit rate") << frame() + frame(louder, 1044) + other << true;
    QTest::newRow("another rate") << frame() + frame(otherRate(), 384) + other << false;
    QTest::newRow("another layer") << frame() + frame({3, 2, 9, 0, 0, 0}) + other << false;
    QTest::newRow("another version") << frame() + frame({2, 1, 9, 0, 0, 0}) + other << false;
    QTest::newRow("not so far off") << near + frame().repeated(2) + other << true;
    QTest::newRow("far off, four") << far + frame().repeated(4) + other << true;
    QTest::newRow("far off, three") << far + frame().repeated(3) + other << false;
    QTest::newRow("far off, three at the end") << far + frame().repeated(3) << false;
    QTest::newRow("far off, the third another")
        << far + frame().repeated(2) + frame(otherRate(), 384) + frame() << false;
    QTest::newRow("far off, the last another")
        << far + frame().repeated(3) + frame(otherRate(), 384) << false;
}

void TestMpegFrames::framesOfOneStreamFollowOneAnother()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, isStream);
    QCOMPARE(isFound(bytes), isStream);
    // From whichever place on.
    QCOMPARE(isFound(QByteArray(1000, '\0') + bytes, 1000), isStream);
}

void TestMpegFrames::framesAreLookedForSoFar()
{
    const QByteArray bytes = QByteArray(5000, '\0') + frame().repeated(2);
    QVERIFY(isFound(bytes, 0, 5001));
    QVERIFY(!isFound(bytes, 0, 5000));
    QVERIFY(isFound(bytes, 1000, 4001));
    QVERIFY(!isFound(bytes, 1000, 4000));
    QVERIFY(!isFound(bytes, bytes.size(), all));
    QVERIFY(!isFound(QByteArray(), 0, all));
    // Bytes like the first one of a head, up to the end of what is read at once and of all.
    QVERIFY(!isFound(QByteArray(3000, '\xFF'), 0, all));
    for (const int before : {2046, 2047, 2048, 2049})
        QVERIFY(isFound(QByteArray(before, '\0') + frame().repeated(2), 0, all));
}

void TestMpegFrames::theHeadTellsTheLength_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<int>("place");
    QTest::addColumn<int>("samples");
    QTest::addColumn<int>("rate");
    const Head mono{3, 1, 9, 0, 0, 3};
    const Head second{2, 1, 14, 0, 0, 0};
    const Head secondMono{2, 1, 14, 0, 0, 3};
    QTest::newRow("stereo") << QByteArray("Xing") << frame() << 36 << 1152 << 44100;
    QTest::newRow("of one bit rate") << QByteArray("Info") << frame() << 36 << 1152 << 44100;
    QTest::newRow("mono") << QByteArray("Xing") << frame(mono) << 21 << 1152 << 44100;
    QTest::newRow("version 2") << QByteArray("Xing") << frame(second, 522) << 21 << 576 << 22050;
    QTest::newRow("version 2, mono") << QByteArray("Xing") << frame(secondMono, 522) << 13 << 576 << 22050;
}

void TestMpegFrames::theHeadTellsTheLength()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, first);
    QFETCH(int, place);
    QFETCH(int, samples);
    QFETCH(int, rate);
    const QByteArray said = name + big32(1) + big32(77);
    const QByteArray bytes = QByteArray(first).replace(place, said.size(), said) + first.repeated(9);
    const MpegStream stream = measured(bytes);
    QCOMPARE(qint64(stream.milliseconds), milliseconds(77 * samples, rate));
    QCOMPARE(int(stream.sampleRate), rate);
    QCOMPARE(qint64(stream.bitsPerSecond), qint64(first.size()) * 9 * 8000 / stream.milliseconds);
}

void TestMpegFrames::countsThatCannotBeAreNotBelieved()
{
    constexpr int behind = 36;
    constexpr int frames = 24;
    const auto saying = [](int flags, quint32 count) {
        return telling({}, usualSize, behind, "Xing" + big32(quint32(flags)) + big32(count)) +
               frame().repeated(frames - 1);
    };
    const qint64 walked = milliseconds(frames * 1152);
    QCOMPARE(qint64(measured(saying(1, 417)).milliseconds), milliseconds(417 * 1152));
    QCOMPARE(qint64(measured(saying(1, 418)).milliseconds), walked);
    QCOMPARE(qint64(measured(saying(1, 0)).milliseconds), walked);
    QCOMPARE(qint64(measured(saying(1, 1)).milliseconds), milliseconds(1152));
    QCOMPARE(qint64(measured(saying(2, 417)).milliseconds), walked);
}

void TestMpegFrames::whatTheEncoderAddedIsNoMusic()
{
    constexpr int behind = 36;
    const auto saying = [](int flags, const char* encoder) {
        QByteArray said = "Xing" + big32(quint32(flags)) + big32(100);
        said += QByteArray((flags & 2 ? 4 : 0) + (flags & 4 ? 100 : 0) + (flags & 8 ? 4 : 0), '\0');
        said += QByteArray(encoder).leftJustified(21, '\0') + QByteArray("\x24\x03\xE8", 3);
        return measured(telling({}, usualSize, behind, said) + frame().repeated(9)).milliseconds;
    };
    const qint64 music = milliseconds(100 * 1152 - 0x240 - 0x3E8);
    for (const int flags : {1, 3, 5, 7, 9, 11, 13, 15})
        for (const char* encoder : {"LAME", "Lavf", "Lavc"})
            QCOMPARE(qint64(saying(flags, encoder)), music);
    QCOMPARE(qint64(saying(15, "else")), milliseconds(100 * 1152));
}

void TestMpegFrames::theOtherHeadTellsTheLengthToo()
{
    constexpr int behind = 36;
    constexpr int frames = 24;
    const auto saying = [](quint32 count) {
        const QByteArray said = "VBRI" + QByteArray(10, '\0') + big32(count) + QByteArray(8, '\0');
        return measured(telling({}, usualSize, behind, said) + frame().repeated(frames - 1));
    };
    QCOMPARE(qint64(saying(77).milliseconds), milliseconds(77 * 1152));
    QCOMPARE(qint64(saying(77).bitsPerSecond), usualSize * (frames - 1) * 8000ll / milliseconds(77 * 1152));
    QCOMPARE(qint64(saying(417).milliseconds), milliseconds(417 * 1152));
    QCOMPARE(qint64(saying(418).milliseconds), milliseconds(frames * 1152));
    QCOMPARE(qint64(saying(0).milliseconds), milliseconds(frames * 1152));
}

void TestMpegFrames::whatIsNoFrameIsPassedOver_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("frames");
    const QByteArray ten = frame().repeated(10);
    QTest::newRow("other bytes between") << ten + QByteArray(999, '\1') + ten << 20;
    QTest::newRow("a lost byte") << ten + ten.mid(1) << 19;
    QTest::newRow("frames of another stream") << ten + frame(otherRate(), 384).repeated(5) + ten << 20;
    QTest::newRow("other bytes at the end") << ten + QByteArray(999, '\1') << 10;
    QTest::newRow("the last one cut") << ten + frame().left(100) << 11;
    QTest::newRow("the last one cut behind its head") << ten + frame().left(4) << 11;
    QTest::newRow("the last one cut in its head") << ten + frame().left(3) << 10;
    QTest::newRow("farther than is looked") << ten + QByteArray(all + 1, '\1') + ten << 10;
    QTest::newRow("nearly as far") << ten + QByteArray(all, '\1') + ten << 20;
}

void TestMpegFrames::whatIsNoFrameIsPassedOver()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, frames);
    const MpegStream stream = measured(bytes);
    QCOMPARE(qint64(stream.milliseconds), milliseconds(frames * 1152));
    QCOMPARE(qint64(stream.bitsPerSecond), qint64(frames) * usualSize * 8000 / stream.milliseconds);
}

void TestMpegFrames::ofVeryLongStreamsTheRestIsAsItWas()
{
    constexpr int before = 60000;
    constexpr int size = 1152;
    constexpr qint64 frames = 170000; // half as much again as is walked
    EndlessFrames file(frame({3, 2, 14, 1, 0, 0}, size), before, before + size * frames);
    CheckedStream stream(file, "stream", CheckedStream::Mode::Read);
    const MpegStream measured = audiocore::measureMp3(stream, 0);
    QCOMPARE(int(measured.sampleRate), 48000);
    QVERIFY(qAbs(measured.milliseconds - milliseconds(frames * size, 48000)) <= 1);
    QVERIFY(qAbs(measured.bitsPerSecond - 384000) <= 1);
    QVERIFY(stream.bytes() < size * frames);
}

void TestMpegFrames::blocksOfRawAacAreCounted()
{
    for (const int blocks : {1, 2, 4})
        QCOMPARE(qint64(measuredAac(adts(300, blocks).repeated(50)).milliseconds),
                 milliseconds(50 * blocks * 1024));
    QCOMPARE(int(measuredAac(adts(300, 1, 12).repeated(50)).sampleRate), 7350);
    QCOMPARE(int(measuredAac(adts(300, 1, 13).repeated(50)).sampleRate), 0);
}

void TestMpegFrames::framesOfRawAacHoldTheirHead()
{
    QCOMPARE(qint64(measuredAac(adts(7).repeated(50)).milliseconds), milliseconds(50 * 1024));
    QCOMPARE(int(measuredAac(adts(6).repeated(50)).sampleRate), 0);
    QCOMPARE(qint64(measuredAac(adts(8191).repeated(50)).milliseconds), milliseconds(50 * 1024));
}

QTEST_GUILESS_MAIN(TestMpegFrames)
#include "tst_mpegframes.moc"
