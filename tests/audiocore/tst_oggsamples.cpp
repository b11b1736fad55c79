// What packets of Ogg play, by packets and pages made by hand.
#include "base/filebytes.h"
#include "media/checkedstream.h"
#include "media/oggsamples.h"
#include "media/oggstream.h"
#include "mediabytes.h"

#include <QtTest>

using audiocore::CheckedStream;
using audiocore::OggStream;
using audiocore::SamplesOfPacket;
using MediaBytes::little;
using TagLib::ByteVector;

class TestOggSamples : public QObject
{
    Q_OBJECT

private slots:
    void blocksOfVorbisLieHalfOverTheOnesBefore();
    void packetsThatAreNoBlocksPlayNothing();
    void theSetupTellsHowLongBlocksAre_data();
    void theSetupTellsHowLongBlocksAre();
    void opusTellsItsFrames_data();
    void opusTellsItsFrames();
    void flacTellsItsSamples_data();
    void flacTellsItsSamples();
    void speexSaysItOnce_data();
    void speexSaysItOnce();
    void streamsBeginTogether();
    void thereIsAMostOfStreams();
    void codecsTellTheirRate_data();
    void codecsTellTheirRate();
};

namespace {
ByteVector vectorOf(const QByteArray& bytes)
{
    return ByteVector(bytes.constData(), unsigned(bytes.size()));
}

/// Bits, the lowest one of each number first.
class Bits
{
public:
    Bits& add(unsigned number, int count)
    {
        for (int i = 0; i < count; ++i) {
            if (m_count % 8 == 0)
                m_bytes.append('\0');
            m_bytes[m_bytes.size() - 1] = char(m_bytes.back() | (number >> i & 1) << m_count % 8);
            ++m_count;
        }
        return *this;
    }
    /// How a mode is told: whether its blocks are long, and two numbers that are to be zeros.
    Bits& mode(bool isLong, unsigned mapping, unsigned zeros = 0)
    {
        return add(isLong ? 1 : 0, 1).add(zeros, 32).add(mapping, 8);
    }
    QByteArray bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
    int m_count = 0;
};

constexpr int sizes = 0xB8; // 256 samples, or 2048

/// By a setup header that ends so.
SamplesOfPacket vorbis(const Bits& setup)
{
    return audiocore::vorbisSamples(vectorOf(QByteArray(28, '\0') + char(sizes) + '\1'),
                                    vectorOf(setup.bytes()));
}

/// Short blocks, long ones, and short ones again.
SamplesOfPacket threeModes()
{
    Bits setup;
    setup.add(0x5A5A, 16).add(2, 6).mode(false, 0).mode(true, 63).mode(false, 1).add(1, 1);
    return vorbis(setup);
}

QByteArray packet(int mode, bool isHeader = false)
{
    return Bits().add(isHeader ? 1 : 0, 1).add(unsigned(mode), 7).bytes();
}

qint64 played(const SamplesOfPacket& samples, const QByteArray& bytes)
{
    return samples ? qint64(samples(vectorOf(bytes))) : -1;
}

/// The first page of a stream, with its first packet.
QByteArray page(int serial, const QByteArray& head, bool begins = true)
{
    return QByteArray("OggS\0", 5) + char(begins ? 2 : 0) + QByteArray(8, '\0') + little(quint32(serial)) +
           QByteArray(8, '\0') + '\1' + char(head.size()) + head;
}

std::vector<OggStream> streamsIn(const QByteArray& bytes)
{
    base::MemoryFile file(bytes.toStdString());
    CheckedStream stream(file, "file", CheckedStream::Mode::Read);
    return audiocore::oggStreams(stream, 0);
}

QByteArray opusHead()
{
    return QByteArray("OpusHead").leftJustified(19, '\1');
}
} // namespace

Q_DECLARE_METATYPE(Bits)

void TestOggSamples::blocksOfVorbisLieHalfOverTheOnesBefore()
{
    const SamplesOfPacket samples = threeModes();
    QCOMPARE(played(samples, packet(0)), qint64(0)); // none is before it
    QCOMPARE(played(samples, packet(0)), qint64(128));
    QCOMPARE(played(samples, packet(1)), qint64(64 + 512));
    QCOMPARE(played(samples, packet(1)), qint64(1024));
    QCOMPARE(played(samples, packet(2)), qint64(512 + 64));
}

void TestOggSamples::packetsThatAreNoBlocksPlayNothing()
{
    const SamplesOfPacket samples = threeModes();
    QCOMPARE(played(samples, packet(1)), qint64(0));
    QCOMPARE(played(samples, packet(1, true)), qint64(0));
    QCOMPARE(played(samples, packet(3)), qint64(0)); // no such mode
    QCOMPARE(played(samples, QByteArray()), qint64(0));
    QCOMPARE(played(samples, packet(1)), qint64(1024));
}

void TestOggSamples::theSetupTellsHowLongBlocksAre_data()
{
    QTest::addColumn<Bits>("setup");
    QTest::addColumn<qint64>("samples");
    const auto row = [](const char* name, const Bits& setup, int samples) {
        QTest::newRow(name) << setup << qint64(samples);
    };
    row("one", Bits().add(0, 6).mode(true, 0).add(1, 1), 1024);
    row("one, filled up", Bits().add(0, 6).mode(true, 0).add(1, 1).add(0, 16), 1024);
    row("a mapping", Bits().add(0, 6).mode(true, 1).add(1, 1), 1024);
    row("the last mapping", Bits().add(0, 6).mode(true, 63).add(1, 1), 1024);
    row("no such mapping", Bits().add(0, 6).mode(true, 64).add(1, 1), -1);
    row("a number that is to be zero", Bits().add(0, 6).mode(true, 0, 1).add(1, 1), -1);
    row("the other one", Bits().add(0, 6).mode(true, 0, 0x80000000u).add(1, 1), -1);
    row("another count", Bits().add(1, 6).mode(true, 0).add(1, 1), -1);
    row("less than a count", Bits().add(0, 5).mode(true, 0).add(1, 1), -1);
    row("no end", Bits().add(0, 48), -1);
    row("an end alone", Bits().add(1, 1), -1);
    row("nothing", Bits(), -1);
    Bits most;
    most.add(63, 6);
    for (int i = 0; i < 64; ++i)
        most.mode(i == 1, 0);
    row("the most", most.add(1, 1), 1024);
}

void TestOggSamples::theSetupTellsHowLongBlocksAre()
{
    QFETCH(Bits, setup);
    const SamplesOfPacket samples = vorbis(setup);
    const bool most = QByteArray(QTest::currentDataTag()) == "the most";
    played(samples, packet(most ? 1 : 0));
    QTEST(played(samples, packet(most ? 1 : 0)), "samples");
}

void TestOggSamples::opusTellsItsFrames_data()
{
    QTest::addColumn<QByteArray>("packet");
    QTest::addColumn<qint64>("samples");
    const auto row = [](const char* name, int kind, int count, int counted, int samples) {
        QTest::newRow(name) << QByteArray(1, char(kind << 3 | count)) + char(counted) << qint64(samples);
    };
    row("speech of 10 ms", 0, 0, 9, 480);
    row("speech of 60 ms", 3, 0, 9, 2880);
    row("wide speech of 60 ms", 11, 0, 9, 2880);
    row("both, of 10 ms", 12, 0, 9, 480);
    row("both, of 20 ms", 15, 0, 9, 960);
    row("music of 2.5 ms", 16, 0, 9, 120);
    row("music of 20 ms", 31, 0, 9, 960);
    row("two frames", 31, 1, 9, 1920);
    row("two frames of different sizes", 31, 2, 9, 1920);
    row("as many as are counted", 31, 3, 0x80 | 5, 4800);
    QTest::newRow("nothing") << QByteArray() << qint64(480);
}

void TestOggSamples::opusTellsItsFrames()
{
    QFETCH(QByteArray, packet);
    QTEST(qint64(audiocore::opusSamples(vectorOf(packet))), "samples");
}

void TestOggSamples::flacTellsItsSamples_data()
{
    QTest::addColumn<QByteArray>("packet");
    QTest::addColumn<qint64>("samples");
    const auto frame = [](int code, const QByteArray& more = QByteArray()) {
        return QByteArray("\xFF\xF8") + char(code << 4) + '\0' + more;
    };
    QTest::newRow("none") << frame(0) << qint64(0);
    QTest::newRow("192") << frame(1) << qint64(192);
    QTest::newRow("576") << frame(2) << qint64(576);
    QTest::newRow("4608") << frame(5) << qint64(4608);
    QTest::newRow("256") << frame(8) << qint64(256);
    QTest::newRow("32768") << frame(15) << qint64(32768);
    QTest::newRow("in a byte") << frame(6, QByteArray("\x7F\x10\x20", 3)) << qint64(0x11);
    QTest::newRow("in two") << frame(7, QByteArray("\x7F\x10\x20", 3)) << qint64(0x1021);
    QTest::newRow("behind a number of two bytes") << frame(6, QByteArray("\xC2\x80\x10", 3)) << qint64(0x11);
    QTest::newRow("behind a number of three")
        << frame(7, QByteArray("\xE2\x80\x80\x10\x20", 5)) << qint64(0x1021);
    QTest::newRow("no frame") << frame(1).replace(0, 1, "\x7F") << qint64(0);
    QTest::newRow("nothing") << QByteArray() << qint64(0);
}

void TestOggSamples::flacTellsItsSamples()
{
    QFETCH(QByteArray, packet);
    QTEST(qint64(audiocore::flacSamples(vectorOf(packet))), "samples");
}

void TestOggSamples::speexSaysItOnce_data()
{
    QTest::addColumn<quint32>("size");
    QTest::addColumn<quint32>("frames");
    QTest::addColumn<qint64>("samples");
    QTest::newRow("one frame") << 320u << 1u << qint64(320);
    QTest::newRow("several") << 320u << 3u << qint64(960);
    QTest::newRow("the most") << (1u << 20) << 1u << qint64(1 << 20);
    QTest::newRow("more") << (1u << 20) + 1 << 1u << qint64(-1);
    QTest::newRow("many of many") << 0x10000u << 0x10000u << qint64(-1);
}

void TestOggSamples::speexSaysItOnce()
{
    QFETCH(quint32, size);
    QFETCH(quint32, frames);
    const QByteArray head = QByteArray(56, '\0') + little(size) + QByteArray(4, '\0') + little(frames);
    QTEST(played(audiocore::speexSamples(vectorOf(head)), "any"), "samples");
    QVERIFY(!audiocore::speexSamples(vectorOf(head.chopped(1))));
}

void TestOggSamples::streamsBeginTogether()
{
    const QByteArray picture = page(1, "\x80theora");
    const QByteArray music = page(2, opusHead());
    const QByteArray later = page(1, "data", false);
    const std::vector<OggStream> streams = streamsIn(picture + music + later + page(3, opusHead()));
    QCOMPARE(int(streams.size()), 2);
    const OggStream* const found = audiocore::musicAmong(streams);
    QVERIFY(found);
    QCOMPARE(found->serial, 2u);
    QCOMPARE(found->begin, 0l);
    QVERIFY(!audiocore::musicAmong(streamsIn(picture)));
    QVERIFY(streamsIn("no page").empty());
    // The first page may have lost its mark.
    QCOMPARE(int(streamsIn(page(2, opusHead(), false) + later).size()), 1);
}

void TestOggSamples::thereIsAMostOfStreams()
{
    constexpr int most = 64;
    QByteArray pages;
    for (int serial = 1; serial < most; ++serial)
        pages += page(serial, "\x80theora");
    QVERIFY(audiocore::musicAmong(streamsIn(pages + page(most, opusHead()))));
    QVERIFY(!audiocore::musicAmong(streamsIn(pages + page(most, "\x80theora") + page(most + 1, opusHead()))));
}

void TestOggSamples::codecsTellTheirRate_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<int>("rate");
    const QByteArray rate = little(quint32(0xAC44));
    const QByteArray vorbis = ("\x01vorbis" + QByteArray(5, '\0') + rate).leftJustified(30, '\0');
    const QByteArray flac = ("\x7F"
                             "FLAC" +
                             QByteArray(22, '\0') + "\x0A\xC4\x42")
                                .leftJustified(51, '\0');
    const QByteArray speex = ("Speex   " + QByteArray(28, '\0') + rate).leftJustified(72, '\0');
    QTest::newRow("Vorbis") << vorbis << 44100;
    QTest::newRow("Vorbis, cut") << vorbis.left(29) << 0;
    QTest::newRow("Opus") << opusHead() << 48000;
    QTest::newRow("Opus, cut") << opusHead().left(18) << 0;
    QTest::newRow("FLAC") << flac << 44100;
    QTest::newRow("FLAC, cut") << flac.left(50) << 0;
    QTest::newRow("Speex") << speex << 44100;
    QTest::newRow("Speex, cut") << speex.left(71) << 0;
    QTest::newRow("something else") << QByteArray(72, 'x') << 0;
}

void TestOggSamples::codecsTellTheirRate()
{
    QFETCH(QByteArray, head);
    const std::vector<OggStream> streams = streamsIn(page(1, head));
    QCOMPARE(int(streams.size()), 1);
    QTEST(int(streams.front().sampleRate()), "rate");
}

QTEST_GUILESS_MAIN(TestOggSamples)
#include "tst_oggsamples.moc"
