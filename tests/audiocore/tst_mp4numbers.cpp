// What the descriptions and tables of MP4 say of the sound, by atoms and bits made by hand.
#include "base/filebytes.h"
#include "media/mp4aac.h"
#include "media/mp4atoms.h"
#include "media/mp4entry.h"
#include "media/mp4tables.h"
#include "mp4fixture.h"
#include "tags/tagsource.h"

#include <QtTest>

#include <cstring>

using audiocore::CheckedStream;
using audiocore::Mp4Aac;
using audiocore::Mp4Atom;
using audiocore::Mp4Atoms;
using audiocore::Mp4Entry;
using audiocore::Mp4SecondBand;
using Mp4::atom;
using Mp4::number;
using TagLib::ByteVector;

class TestMp4Numbers : public QObject
{
    Q_OBJECT

private slots:
    void descriptionsTellTheRate_data();
    void descriptionsTellTheRate();
    void descriptionsTellTheBits_data();
    void descriptionsTellTheBits();
    void configurationsTellTheSecondBand_data();
    void configurationsTellTheSecondBand();
    void framesTellTheSecondBand_data();
    void framesTellTheSecondBand();
    void fewFramesTellNothing_data();
    void fewFramesTellNothing();
    void durationsAndSizesAreAdded_data();
    void durationsAndSizesAreAdded();
    void theFirstFramesLieOneBehindTheOther_data();
    void theFirstFramesLieOneBehindTheOther();
    void theLastFragmentTellsItsEnd_data();
    void theLastFragmentTellsItsEnd();
};

namespace {
struct Opened
{
    explicit Opened(const QByteArray& bytes)
        : memory(bytes.toStdString()), stream(memory, "file", CheckedStream::Mode::Read), file(stream),
          atoms(file, Mp4Atoms::Fragments::Enter)
    {
    }

    base::MemoryFile memory;
    CheckedStream stream;
    audiocore::TagSource file;
    Mp4Atoms atoms;
};

/// From zeros and ones; blanks are for the eye.
QByteArray bytesOf(const QByteArray& bits)
{
    const QByteArray written = QByteArray(bits).replace(' ', "");
    QByteArray bytes((written.size() + 7) / 8, '\0');
    for (int i = 0; i < written.size(); ++i)
        if (written.at(i) == '1')
            bytes[i / 8] = char(bytes.at(i / 8) | 0x80 >> i % 8);
    return bytes;
}

QByteArray zeros(int count)
{
    return QByteArray(count, '\0');
}

/// One entry of a kind; later versions have more numbers in front of the atoms.
QByteArray entry(const char* codec, const QByteArray& atoms, int version = 0, double rate = 0)
{
    QByteArray later = version == 1 ? zeros(16) : QByteArray();
    if (version == 2) {
        quint64 bits = 0;
        std::memcpy(&bits, &rate, sizeof bits);
        later = zeros(4) + Mp4::number64(bits) + zeros(24);
    }
    return atom(codec,
                zeros(8) + number(quint32(version) << 16) + zeros(12) + number(0xAC440000u) + later + atoms);
}

QByteArray list(const QByteArray& entries, int version = 0)
{
    return atom("stsd", number(quint32(version) << 24) + number(1) + entries);
}

Mp4Entry entryOf(const QByteArray& descriptions)
{
    Opened opened(descriptions);
    Mp4Atom all;
    all.size = descriptions.size();
    return audiocore::readMp4Entry(opened.file, all);
}

/// At 22050 Hz, without a word of a second band.
const char* const halfRate = "00010 0111 0010 000";

/// What describes the stream in an atom of its own: `head` names its relations, `kind` is that of the sound.
QByteArray described(const QByteArray& head, int kind, const QByteArray& size = QByteArray("\x02"))
{
    const QByteArray decoder = char(kind) + zeros(8) + number(64000) + '\x05' + size + bytesOf(halfRate);
    return atom("esds", number(0) + '\x03' + '\x20' + zeros(2) + head + '\x04' + '\x11' + decoder);
}

QByteArray lossless(quint32 rate, quint32 bits)
{
    return atom("alac", zeros(9) + '\x10' + zeros(3) + '\x02' + zeros(6) + number(bits) + number(rate));
}

Mp4Aac aac(const QByteArray& bits)
{
    const QByteArray bytes = bytesOf(bits);
    return audiocore::readAacConfig(ByteVector(bytes.constData(), unsigned(bytes.size())));
}

bool allHold(const QByteArrayList& frames)
{
    TagLib::ByteVectorList all;
    for (const QByteArray& frame : frames)
        all.append(ByteVector(frame.constData(), unsigned(frame.size())));
    return audiocore::holdSecondBand(all);
}

const char* const bandFrame = "0000 110 0001 11010000 111";
const char* const plainFrame = "0000 110 0001 00000000 111";

QByteArray times(const QByteArray& entry, int count)
{
    return entry.repeated(count);
}
} // namespace

void TestMp4Numbers::descriptionsTellTheRate_data()
{
    QTest::addColumn<QByteArray>("descriptions");
    QTest::addColumn<int>("rate");
    const auto row = [](const char* name, const QByteArray& entry, int rate, int version = 0) {
        QTest::newRow(name) << list(entry, version) << rate;
    };
    const QByteArray rate8 = lossless(8000, 0);
    const QByteArray other = atom("abcd", QByteArray());
    row("as it is", entry("alac", QByteArray()), 44100);
    row("in an atom", entry("alac", rate8), 8000);
    row("in an atom around it", entry("alac", atom("wave", other + rate8)), 8000);
    row("behind others", entry("alac", times(other, 31) + rate8), 8000);
    row("behind too many", entry("alac", times(other, 32) + rate8), 44100);
    row("behind one that is too small", entry("alac", number(7) + "abcd" + rate8), 44100);
    row("behind one that is too large", entry("alac", number(99) + "abcd" + rate8), 44100);
    row("of another kind", entry("abcd", rate8), 44100);
    row("in a short atom", entry("alac", atom("alac", zeros(27))), 44100);
    row("the older version", entry("alac", rate8, 1), 8000);
    row("the later version", entry("alac", QByteArray(), 2, 96000), 96000);
    row("the later version, rounded", entry("alac", QByteArray(), 2, 95999.6), 96000);
    row("the later version, the highest", entry("alac", QByteArray(), 2, 768000), 768000);
    row("the later version, higher", entry("alac", QByteArray(), 2, 768001), 0);
    row("the later version, none", entry("alac", QByteArray(), 2, 0), 0);
    row("the later version, in an atom", entry("alac", rate8, 2, 96000), 8000);
    row("a list with a version", entry("alac", rate8, 0), 8000, 1);
    row("a list and an entry with versions", entry("alac", QByteArray(), 2, 96000), 44100, 1);
    row("no entry", QByteArray(), 0);
    row("an entry that is too small", number(7) + "alac" + zeros(28), 0);
    row("an entry longer than the list", entry("alac", QByteArray()).replace(0, 4, number(37)), 0);
    row("FLAC", entry("fLaC", atom("dfLa", zeros(18) + QByteArray("\x17\x70\0\0", 4))), 96000);
    row("FLAC, cut", entry("fLaC", atom("dfLa", zeros(18) + QByteArray("\x17\x70\0", 3))), 44100);
    row("Opus", entry("Opus", atom("dOps", zeros(1))), 48000);
    row("Opus without its atom", entry("Opus", QByteArray()), 44100);
    row("AC-3", entry("ac-3", atom("dac3", bytesOf("00"))), 48000);
    row("AC-3 of a third rate", entry("ac-3", atom("dac3", bytesOf("10"))), 32000);
    row("AC-3 of no rate", entry("ac-3", atom("dac3", bytesOf("11"))), 44100);
    row("E-AC-3", entry("ec-3", atom("dec3", bytesOf("0000000000000 000 10"))), 32000);
    row("AAC", entry("mp4a", described(zeros(1), 0x40)), 22050);
    for (const int kind : {0x3F, 0x41, 0x65, 0x69})
        row(qPrintable(QString::number(kind, 16)), entry("mp4a", described(zeros(1), kind)), 44100);
    for (const int kind : {0x66, 0x67, 0x68})
        row(qPrintable(QString::number(kind, 16)), entry("mp4a", described(zeros(1), kind)), 22050);
    row("AAC that depends", entry("mp4a", described("\x80" + zeros(2), 0x40)), 22050);
    row("AAC with an address",
        entry("mp4a", described("\x40\x03"
                                "abc",
                                0x40)),
        22050);
    row("AAC with a clock", entry("mp4a", described("\x20" + zeros(2), 0x40)), 22050);
    row("AAC with all",
        entry("mp4a", described("\xE0" + zeros(2) +
                                    "\x01"
                                    "a" +
                                    zeros(2),
                                0x40)),
        22050);
    row("AAC with a long size", entry("mp4a", described(zeros(1), 0x40, "\x80\x80\x80\x02")), 22050);
    row("AAC of another descriptor", entry("mp4a", described(zeros(1), 0x40).replace(12, 1, "\x02")), 44100);
}

void TestMp4Numbers::descriptionsTellTheRate()
{
    QFETCH(QByteArray, descriptions);
    QTEST(int(entryOf(descriptions).rate), "rate");
}

void TestMp4Numbers::descriptionsTellTheBits_data()
{
    QTest::addColumn<QByteArray>("descriptions");
    QTest::addColumn<int>("bits");
    const auto row = [](const char* name, const QByteArray& entry, int bits) {
        QTest::newRow(name) << list(entry) << bits;
    };
    row("ALAC", entry("alac", lossless(8000, 100000)), 100000);
    row("ALAC, as if not coded", entry("alac", lossless(8000, 8000 * 2 * 16)), 0);
    row("AC-3", entry("ac-3", atom("dac3", bytesOf("00 000000000000 00000"))), 32000);
    row("AC-3, the most", entry("ac-3", atom("dac3", bytesOf("00 000000000000 10010"))), 640000);
    row("AC-3, none", entry("ac-3", atom("dac3", bytesOf("00 000000000000 10011"))), 0);
    row("E-AC-3", entry("ec-3", atom("dec3", bytesOf("0000011000000"))), 192000);
    row("AAC", entry("mp4a", described(zeros(1), 0x40)), 64000);
    row("MP3", entry("mp4a", described(zeros(1), 0x6B)), 64000);
}

void TestMp4Numbers::descriptionsTellTheBits()
{
    QFETCH(QByteArray, descriptions);
    QTEST(int(entryOf(descriptions).bitsPerSecond), "bits");
}

void TestMp4Numbers::configurationsTellTheSecondBand_data()
{
    QTest::addColumn<QByteArray>("bits");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("band");
    const int no = int(Mp4SecondBand::No);
    const int yes = int(Mp4SecondBand::Yes);
    const int unsaid = int(Mp4SecondBand::Unsaid);
    const QByteArray half = halfRate;
    const QByteArray mark = "01010110111 ";
    const auto row = [](const char* name, const QByteArray& bits, int rate, int band) {
        QTest::newRow(name) << bits << rate << band;
    };
    row("unsaid", half, 22050, unsaid);
    row("unsaid, the highest rate for it", "00010 0110 0010 000", 24000, unsaid);
    row("a higher rate", "00010 0101 0010 000", 32000, no);
    row("the lowest rate", "00010 1100 0010 000", 7350, unsaid);
    row("no such rate", "00010 1101 0010 000", 0, unsaid);
    row("a rate in numbers", "00010 1111 000000000001111101000000 0010 000", 8000, unsaid);
    row("a kind of more bits", "11111 000000 0111 0010 000", 22050, unsaid);
    row("in front", "00101 0111 0010 0100 00010 000", 22050, yes);
    row("in front, as wide", "00101 0111 0010 0111 00010 000", 22050, no);
    row("in front, with stereo from it", "11101 0111 0001 0100 00010 000", 22050, yes);
    row("behind", half + mark + "00101 1 0100", 22050, yes);
    row("behind, as wide", half + mark + "00101 1 0111", 22050, unsaid);
    row("behind, not there", half + mark + "00101 0 0100", 22050, no);
    row("behind, at the very end", half + mark + "00101", 22050, no);
    row("behind, of another kind", half + mark + "00100 1 0100", 22050, unsaid);
    row("behind, farther off", half + "000 " + mark + "00101 1 0100", 22050, yes);
    row("behind another mark", half + "01010110110 00101 1 0100", 22050, unsaid);
}

void TestMp4Numbers::configurationsTellTheSecondBand()
{
    QFETCH(QByteArray, bits);
    const Mp4Aac config = aac(bits);
    QTEST(int(config.rate), "rate");
    QTEST(int(config.secondBand), "band");
}

void TestMp4Numbers::framesTellTheSecondBand_data()
{
    QTest::addColumn<QByteArray>("bits");
    QTest::addColumn<bool>("holds");
    const auto row = [](const char* name, const QByteArray& bits, bool holds) {
        QTest::newRow(name) << bits << holds;
    };
    const QByteArray band = "110 0001 11010000 ";
    const QByteArray filling = "110 0001 00000000 ";
    row("a band", bandFrame, true);
    row("a band with a sum", "0000 110 0001 11100000 111", true);
    row("filling", plainFrame, false);
    row("filling that is none", "0000 100 0001 11010000 111", false);
    row("behind filling", filling + filling + band + "111", true);
    row("before filling", band + filling + filling + "111", true);
    row("behind much filling", QByteArray("0000 ") + filling + filling + filling + band + "1000 111", false);
    row("no end", "0000 110 0001 11010000 1", false);
    row("an end before the end", "0000 110 0001 11010000 111 1", false);
    row("of no bytes", "0000 110 0000 110 1000" + QByteArray(64, '0') + "111", false);
    row("of many bytes", "0000 110 1111 00000010 1101" + QByteArray(16 * 8 - 4, '0') + "111", true);
    row("of as many as need no more", "0000 110 1111 00000000 1101" + QByteArray(14 * 8 - 4, '0') + "111",
        true);
    row("nothing", "", false);
    row("zeros", "0000000000000000", false);
}

void TestMp4Numbers::framesTellTheSecondBand()
{
    QFETCH(QByteArray, bits);
    QFETCH(bool, holds);
    const QByteArray frame = bytesOf(bits);
    QCOMPARE(allHold({frame, frame, frame}), holds);
}

void TestMp4Numbers::fewFramesTellNothing_data()
{
    QTest::addColumn<int>("bands");
    QTest::addColumn<int>("all");
    QTest::addColumn<bool>("hold");
    QTest::newRow("two of two") << 2 << 2 << false;
    QTest::newRow("three of three") << 3 << 3 << true;
    QTest::newRow("three of five") << 3 << 5 << true;
    QTest::newRow("three of six") << 3 << 6 << false;
    QTest::newRow("four of six") << 4 << 6 << true;
    QTest::newRow("none") << 0 << 0 << false;
}

void TestMp4Numbers::fewFramesTellNothing()
{
    QFETCH(int, bands);
    QFETCH(int, all);
    QByteArrayList frames;
    for (int i = 0; i < all; ++i)
        frames.append(bytesOf(i < bands ? bandFrame : plainFrame));
    QTEST(allHold(frames), "hold");
}

void TestMp4Numbers::durationsAndSizesAreAdded_data()
{
    QTest::addColumn<quint32>("claimed");
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("counted");
    QTest::newRow("none") << 0u << 0 << 0;
    QTest::newRow("all") << 3u << 3 << 3;
    QTest::newRow("fewer than there are") << 2u << 3 << 2;
    QTest::newRow("more than there are") << 0xFFFFFFFFu << 3 << 3;
    QTest::newRow("as many as are read at once") << 4096u << 4096 << 4096;
    QTest::newRow("more than are read at once") << 9000u << 9000 << 9000;
}

void TestMp4Numbers::durationsAndSizesAreAdded()
{
    QFETCH(quint32, claimed);
    QFETCH(int, entries);
    QFETCH(int, counted);
    Opened durations(Mp4::table("stts", claimed, times(number(2) + number(1024), entries)) + "rest");
    QCOMPARE(int(audiocore::totalDuration(durations.file, durations.atoms.find({"stts"}))), counted * 2048);
    Opened sizes(atom("stsz", number(0) + number(0) + number(claimed) + times(number(100), entries)) +
                 "rest");
    QCOMPARE(int(audiocore::totalSize(sizes.file, sizes.atoms.find({"stsz"}))), counted * 100);
    Opened same(atom("stsz", number(0) + number(100) + number(claimed)));
    QCOMPARE(int(audiocore::totalSize(same.file, same.atoms.find({"stsz"}))), 0);
    QCOMPARE(int(audiocore::totalDuration(same.file, nullptr)), 0);
    QCOMPARE(int(audiocore::totalSize(same.file, nullptr)), 0);
}

void TestMp4Numbers::theFirstFramesLieOneBehindTheOther_data()
{
    constexpr quint32 letters = 8; // place of the first one
    QTest::addColumn<QByteArray>("tables");
    QTest::addColumn<QByteArray>("frames");
    const auto places = [](quint32 count, quint32 place) { return Mp4::table("stco", count, number(place)); };
    const auto runs = [](quint32 count, quint32 together) {
        return Mp4::table("stsc", count, number(1) + number(together) + number(1));
    };
    const auto sizes = [](quint32 same, const QList<quint32>& all) {
        QByteArray each;
        for (const quint32 size : all)
            each += number(size);
        return atom("stsz", number(0) + number(same) + number(quint32(all.size())) + each);
    };
    const QList<quint32> three{1, 2, 3};
    const QByteArray usual = places(1, letters) + runs(1, 3) + sizes(0, three);
    const auto row = [](const char* name, const QByteArray& tables, const QByteArray& frames) {
        QTest::newRow(name) << tables << frames;
    };
    row("three", usual, "a bc def");
    row("elsewhere", places(1, letters + 3) + runs(1, 3) + sizes(0, three), "d ef ghi");
    row("wide places", Mp4::table("co64", 1, Mp4::number64(letters + 3)) + runs(1, 3) + sizes(0, three),
        "d ef ghi");
    row("fewer together", places(1, letters) + runs(1, 2) + sizes(0, three), "a bc");
    row("fewer sizes", places(1, letters) + runs(1, 9) + sizes(0, three), "a bc def");
    row("many", places(1, letters) + runs(1, 9) + sizes(0, {1, 1, 1, 1, 1, 1, 1, 1, 1}), "a b c d e f g h");
    row("no places", places(0, letters) + runs(1, 3) + sizes(0, three), "");
    row("no runs", places(1, letters) + runs(0, 3) + sizes(0, three), "");
    row("one size", places(1, letters) + runs(1, 3) + sizes(2, three), "");
    row("no sizes", places(1, letters) + runs(1, 3), "");
    row("one too large", places(1, letters) + runs(1, 3) + sizes(0, {1, 2049, 1}), "a");
    row("behind the end", places(1, 100000) + runs(1, 3) + sizes(0, three), "");
}

void TestMp4Numbers::theFirstFramesLieOneBehindTheOther()
{
    QFETCH(QByteArray, tables);
    Opened opened(atom("skip", "abcdefghijklmnop") + atom("stbl", tables));
    const Mp4Atom* const all = opened.atoms.find({"stbl"});
    QVERIFY(all);
    QByteArrayList frames;
    for (const ByteVector& frame : audiocore::firstFrames(opened.file, opened.atoms, *all))
        frames.append(QByteArray(frame.data(), int(frame.size())));
    QTEST(frames.join(' '), "frames");
}

void TestMp4Numbers::theLastFragmentTellsItsEnd_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("end");
    const QByteArray usual =
        atom("moov", atom("mvex", atom("trex", number(0) + number(2) + number(1) + number(9)) +
                                      atom("trex", number(0) + number(1) + number(1) + number(10))));
    const auto head = [](quint32 flags, const QByteArray& more = QByteArray()) {
        return atom("tfhd", number(flags) + number(1) + more);
    };
    const QByteArray begin = atom("tfdt", number(0) + number(1000));
    const QByteArray run = atom("trun", number(0) + number(5));
    const auto fragment = [](const QByteArray& parts) { return atom("moof", atom("traf", parts)); };
    const auto row = [&usual](const char* name, const QByteArray& fragments, int end) {
        QTest::newRow(name) << usual + fragments << end;
    };
    row("usual samples", fragment(head(0) + begin + run), 1050);
    row("two runs", fragment(head(0) + begin + run + run), 1100);
    row("the last one", fragment(head(0) + begin + run) + fragment(head(0) + begin + run + run), 1100);
    row("a wide place", fragment(head(0) + atom("tfdt", number(1 << 24) + Mp4::number64(2000)) + run), 2050);
    row("samples of its own", fragment(head(8, number(20)) + begin + run), 1100);
    row("behind other numbers", fragment(head(11, zeros(12) + number(20)) + begin + run), 1100);
    row("each sample by itself",
        fragment(head(0) + begin + atom("trun", number(0x100) + number(2) + number(7) + number(8))), 1015);
    row("each sample behind other numbers",
        fragment(head(0) + begin +
                 atom("trun",
                      number(0xF05) + number(2) + zeros(8) + number(7) + zeros(12) + number(8) + zeros(12))),
        1015);
    row("no place", fragment(head(0) + run), 0);
    row("of another track", fragment(atom("tfhd", number(0) + number(3)) + begin + run), 0);
    row("none", QByteArray(), 0);
    const QByteArray others = times(fragment(atom("tfhd", number(0) + number(3)) + begin + run), 15);
    row("before many of others", fragment(head(0) + begin + run) + others, 1050);
    row("before more of others", fragment(head(0) + begin + run) + others + others.left(others.size() / 15),
        0);
}

void TestMp4Numbers::theLastFragmentTellsItsEnd()
{
    QFETCH(QByteArray, file);
    Opened opened(file);
    QTEST(int(audiocore::endOfFragments(opened.file, opened.atoms, 1)), "end");
}

QTEST_GUILESS_MAIN(TestMp4Numbers)
#include "tst_mp4numbers.moc"
