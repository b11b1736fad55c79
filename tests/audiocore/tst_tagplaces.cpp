// Where the tags of a file stand, and the frames in them, at the bounds of what is believed.
#include "audiocore/tagitem.h"
#include "base/filebytes.h"
#include "mediabytes.h"
#include "tags/id3v2frames.h"
#include "tags/tagplaces.h"
#include "tags/tagsource.h"
#include "tags/tagwriting.h"

#include <QtTest>

namespace id3v2 = audiocore::id3v2;

using audiocore::CheckedStream;
using audiocore::Place;
using MediaBytes::apeItem;
using MediaBytes::apeTag;
using MediaBytes::frame;
using MediaBytes::little;
using TagLib::ByteVector;

class TestTagPlaces : public QObject
{
    Q_OBJECT

private slots:
    void theTagAtTheEndIsFound_data();
    void theTagAtTheEndIsFound();
    void theItemsBeforeItAreFound_data();
    void theItemsBeforeItAreFound();
    void theTagInFrontIsFound_data();
    void theTagInFrontIsFound();
    void bytesArePutWhereTheTagWas();
    void theTagOfFixedLengthIsWrittenOver_data();
    void theTagOfFixedLengthIsWrittenOver();
    void aTagTellsItsSize_data();
    void aTagTellsItsSize();
    void capitalsAndDigitsLookLikeIds_data();
    void capitalsAndDigitsLookLikeIds();
    void zerosBehindFullBytesAreTakenOut();
    void sizesAreWrittenAsTheVersionHasThem();
    void flagsTellWhatIsAroundAFrame();
    void framesBeginBehindFurtherHeads_data();
    void framesBeginBehindFurtherHeads();
    void framesGoUpToTheEnd_data();
    void framesGoUpToTheEnd();
    void sizesOfTheNewestVersionAreTakenAsTheyGoOn_data();
    void sizesOfTheNewestVersionAreTakenAsTheyGoOn();
};

namespace {
const QByteArray music(1000, '\x55');

QByteArray oldest()
{
    return MediaBytes::id3v1("Title", 3, 17);
}

ByteVector vectorOf(const QByteArray& bytes)
{
    return ByteVector(bytes.constData(), unsigned(bytes.size()));
}

QByteArray arrayOf(const ByteVector& bytes)
{
    return QByteArray(bytes.data(), int(bytes.size()));
}

std::string_view viewOf(const QByteArray& bytes)
{
    return {bytes.constData(), std::size_t(bytes.size())};
}

/// A file in memory, as the writers of tags have it.
struct Opened
{
    explicit Opened(const QByteArray& bytes)
        : memory(bytes.toStdString()), stream(memory, "file", CheckedStream::Mode::ReadWrite), file(stream)
    {
    }
    QByteArray bytes() const { return QByteArray::fromStdString(memory.bytes()); }

    base::MemoryFile memory;
    CheckedStream stream;
    audiocore::TagSource file;
};

void compare(const Place& place, int begin, int size)
{
    QCOMPARE(int(place.begin), begin);
    QCOMPARE(int(place.size), size);
}

QByteArray header(int version, int flags, int size)
{
    return QByteArray("ID3") + char(version) + '\0' + char(flags) + MediaBytes::sevenBits(quint32(size));
}

QByteArray frame3(const char* id, const QByteArray& body)
{
    return frame(id, body, 0, 3);
}

/// The ids of the frames, and how far they go.
std::pair<QByteArray, int> framesIn(int version, const QByteArray& body)
{
    QByteArray ids;
    const auto part = [&body](unsigned int position, unsigned int size) {
        return viewOf(body).substr(position, size);
    };
    const auto take = [&](std::string_view head, unsigned int, unsigned int size) {
        ids += QByteArray(head.data(), int(id3v2::idSize(version))) + ' ' + QByteArray::number(size) + ' ';
        return !ids.contains("STOP");
    };
    const unsigned int end = id3v2::eachFrame(version, unsigned(body.size()), part, take);
    return {ids.trimmed(), int(end)};
}
} // namespace

void TestTagPlaces::theTagAtTheEndIsFound_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("size");
    QTest::newRow("behind music") << music + oldest() << 128;
    QTest::newRow("alone") << oldest() << 128;
    QTest::newRow("cut") << oldest().left(127) << 0;
    QTest::newRow("none") << music << 0;
    QTest::newRow("not at the end") << music + oldest() + '\0' << 0;
    QTest::newRow("no bytes") << QByteArray() << 0;
}

void TestTagPlaces::theTagAtTheEndIsFound()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, size);
    Opened opened(bytes);
    compare(audiocore::findId3v1(opened.file), bytes.size() - size, size);
}

void TestTagPlaces::theItemsBeforeItAreFound_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("begin");
    QTest::addColumn<int>("size");
    const QByteArray tag = apeTag(apeItem("Artist", "Singer"), 1);
    QTest::newRow("at the end") << music + tag << music.size() << tag.size();
    QTest::newRow("before the oldest kind") << music + tag + oldest() << music.size() << tag.size();
    QTest::newRow("alone") << tag << 0 << tag.size();
    QTest::newRow("a footer alone") << apeTag(QByteArray(), 0) << 0 << 32;
    QTest::newRow("cut in front") << tag.mid(1) << tag.size() - 1 << 0;
    QTest::newRow("less than a footer") << tag.right(31) << 31 << 0;
    QTest::newRow("far before the end")
        << music + tag + music.left(128) << music.size() + tag.size() + 128 << 0;
    QTest::newRow("none before the oldest kind") << music + oldest() << music.size() << 0;
    QTest::newRow("none") << music << music.size() << 0;
}

void TestTagPlaces::theItemsBeforeItAreFound()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, begin);
    QFETCH(int, size);
    Opened opened(bytes);
    compare(audiocore::findApe(opened.file), begin, size);
}

void TestTagPlaces::theTagInFrontIsFound_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("begin");
    QTest::addColumn<int>("size");
    const QByteArray tag = MediaBytes::id3v2(frame("TPE1", "\3Singer"));
    QTest::newRow("in front") << tag + music << 0 << tag.size();
    QTest::newRow("alone") << tag << 0 << tag.size();
    QTest::newRow("cut") << tag.chopped(1) << 0 << tag.size() - 1;
    QTest::newRow("none") << music << 0 << 0;
    QTest::newRow("behind other bytes") << music + tag + music << music.size() << tag.size();
    QTest::newRow("behind other bytes, cut") << music + tag.chopped(3) << music.size() << tag.size() - 3;
}

void TestTagPlaces::theTagInFrontIsFound()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, begin);
    QFETCH(int, size);
    Opened opened(bytes);
    compare(audiocore::findId3v2(opened.file, begin), begin, size);
}

void TestTagPlaces::bytesArePutWhereTheTagWas()
{
    Opened opened("harbour");
    audiocore::putAt(opened.file, {3, 0}, ByteVector());
    audiocore::putAt(opened.file, {3, 0}, "---");
    QCOMPARE(opened.bytes(), QByteArray("har---bour"));
    audiocore::putAt(opened.file, {3, 3}, ByteVector());
    QCOMPARE(opened.bytes(), QByteArray("harbour"));
    constexpr long most = 128 << 20;
    QCOMPARE(arrayOf(audiocore::bytesAt(opened.file, {3, most}).value_or("none")), QByteArray("bour"));
    QVERIFY(!audiocore::bytesAt(opened.file, {3, most + 1}));
    QCOMPARE(arrayOf(audiocore::bytesAt(opened.file, {3, 0}).value_or("none")), QByteArray());
}

void TestTagPlaces::theTagOfFixedLengthIsWrittenOver_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("place");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char* name, int type, const QByteArray& text, int place,
                        const QByteArray& bytes) { QTest::newRow(name) << type << text << place << bytes; };
    row("title", TAG_TITLE, "New", 3, QByteArray("New").leftJustified(30, '\0'));
    row("a long artist", TAG_ARTIST, QByteArray(40, 'x'), 33, QByteArray(30, 'x'));
    row("album", TAG_ALBUM, "Caf\xC3\xA9", 63, QByteArray("Caf\xE9").leftJustified(30, '\0'));
    row("an album in other letters", TAG_ALBUM, "\xE5\xA4\x9C", 63, QByteArray(30, '\0'));
    row("year", TAG_YEAR, "2012", 93, "2012");
    row("no year", TAG_YEAR, "", 93, QByteArray(4, '\0'));
    row("track", TAG_TRACK, "12", 126, "\x0C");
    row("the highest track", TAG_TRACK, "255", 126, "\xFF");
    row("a track too high", TAG_TRACK, "256", 126, QByteArray(1, '\0'));
    row("a track of many digits", TAG_TRACK, "99999999999", 126, QByteArray(1, '\0'));
    row("no track", TAG_TRACK, "", 126, QByteArray(1, '\0'));
    row("genre", TAG_GENRE, "Jazz", 127, "\x08");
    row("a genre that has no number", TAG_GENRE, "Sea shanty", 127, "\xFF");
}

void TestTagPlaces::theTagOfFixedLengthIsWrittenOver()
{
    QFETCH(int, type);
    QFETCH(QByteArray, text);
    QFETCH(int, place);
    QFETCH(QByteArray, bytes);
    audiocore::FileEdits edits;
    edits.further.texts[std::size_t(type)] = text.toStdString();
    Opened opened(music + oldest());
    audiocore::writeId3v1(opened.file, edits);
    QCOMPARE(opened.bytes(), music + oldest().replace(place, bytes.size(), bytes));
    // Where there is none, none is made.
    Opened without(music);
    audiocore::writeId3v1(without.file, edits);
    QCOMPARE(without.bytes(), music);
}

void TestTagPlaces::aTagTellsItsSize_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("whole");
    QTest::newRow("usual") << header(4, 0, 300) + music << 310;
    QTest::newRow("a footer") << header(4, 0x10, 300) << 320;
    QTest::newRow("other flags") << header(4, 0xEF, 300) << 310;
    QTest::newRow("the largest") << header(3, 0, (1 << 28) - 1) << 10 + (1 << 28) - 1;
    QTest::newRow("cut") << header(4, 0, 300).left(9) << -1;
    QTest::newRow("something else") << header(4, 0, 300).replace("ID3", "3DI") << -1;
    for (const int place : {6, 7, 8, 9})
        QTest::addRow("eight bits at %d", place) << header(4, 0, 300).replace(place, 1, "\x80") << -1;
}

void TestTagPlaces::aTagTellsItsSize()
{
    QFETCH(QByteArray, bytes);
    const std::optional<id3v2::TagSize> size = id3v2::sizeOfTag(viewOf(bytes));
    QTEST(size ? int(size->whole()) : -1, "whole");
}

void TestTagPlaces::capitalsAndDigitsLookLikeIds_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::addColumn<bool>("looks");
    QTest::newRow("a frame") << QByteArray("TPE1") << true;
    QTest::newRow("the ends of letters and digits") << QByteArray("AZ09") << true;
    QTest::newRow("a short one filled up") << QByteArray("TT2\0", 4) << true;
    QTest::newRow("a short one") << QByteArray("TT2") << true;
    QTest::newRow("a zero elsewhere") << QByteArray("TT\0Z", 4) << false;
    QTest::newRow("nothing") << QByteArray() << false;
    for (const char* other : {"@AAA", "A[AA", "AA/A", "AAA:", "aAAA", " AAA"})
        QTest::newRow(other) << QByteArray(other) << false;
}

void TestTagPlaces::capitalsAndDigitsLookLikeIds()
{
    QFETCH(QByteArray, id);
    QTEST(id3v2::looksLikeId(viewOf(id)), "looks");
}

void TestTagPlaces::zerosBehindFullBytesAreTakenOut()
{
    const auto plain = [](QByteArray bytes) {
        return bytes.left(int(id3v2::resynchronise(bytes.data(), unsigned(bytes.size()))));
    };
    QCOMPARE(plain({"a\xFF\0b\xFF\0\0\xFF", 8}), QByteArray("a\xFF"
                                                            "b\xFF\0\xFF",
                                                            6));
    QCOMPARE(plain({"a\xFF\0", 3}), QByteArray("a\xFF"));
    QCOMPARE(plain({"\xFF\xE0\0", 3}), QByteArray("\xFF\xE0\0", 3));
}

void TestTagPlaces::sizesAreWrittenAsTheVersionHasThem()
{
    const auto written = [](int version) {
        QByteArray place(int(id3v2::idSize(version)), '?');
        id3v2::putFrameSize(version, place.data(), 0x0ABCDE);
        return place;
    };
    QCOMPARE(written(2), QByteArray("\x0A\xBC\xDE"));
    QCOMPARE(written(3), QByteArray("\0\x0A\xBC\xDE", 4));
    QCOMPARE(written(4), QByteArray("\0\x2A\x79\x5E", 4));
    QCOMPARE(id3v2::fromSevenBits(written(4).constData()), 0x0ABCDEu);
    QCOMPARE(id3v2::numberAt(written(3).constData(), 4), 0x0ABCDEu);
}

void TestTagPlaces::flagsTellWhatIsAroundAFrame()
{
    const auto said = [](int version, int flags) {
        const id3v2::Wrapping wrapping = id3v2::wrappingOf(version, char(flags));
        return QStringLiteral("%1 %2 %3")
            .arg(wrapping.packed)
            .arg(wrapping.unsynchronised)
            .arg(wrapping.before);
    };
    QCOMPARE(said(4, 0), QStringLiteral("0 0 0"));
    QCOMPARE(said(4, 0x01), QStringLiteral("0 0 4"));
    QCOMPARE(said(4, 0x02), QStringLiteral("0 1 0"));
    QCOMPARE(said(4, 0x04), QStringLiteral("1 0 0"));
    QCOMPARE(said(4, 0x08), QStringLiteral("1 0 0"));
    QCOMPARE(said(4, 0x41), QStringLiteral("0 0 5"));
    QCOMPARE(said(4, 0xB0), QStringLiteral("0 0 0"));
    QCOMPARE(said(3, 0x20), QStringLiteral("0 0 1"));
    QCOMPARE(said(3, 0x40), QStringLiteral("1 0 0"));
    QCOMPARE(said(3, 0x80), QStringLiteral("1 0 0"));
    QCOMPARE(said(3, 0x1F), QStringLiteral("0 0 0"));
}

void TestTagPlaces::framesBeginBehindFurtherHeads_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("begin");
    const QByteArray further("\0\0\0\x06\1\2\3\4\5\6", 10);
    QTest::newRow("none") << header(4, 0, 10) << further << 0;
    QTest::newRow("one") << header(4, 0x40, 10) << further << 6;
    QTest::newRow("one, up to the end") << header(4, 0x40, 6) << further.left(6) << 6;
    QTest::newRow("one, over the end") << header(4, 0x40, 5) << further.left(5) << -1;
    QTest::newRow("one of the older version") << header(3, 0x40, 10) << further << 10;
    QTest::newRow("one of the older version, over the end") << header(3, 0x40, 9) << further.left(9) << -1;
    QTest::newRow("one of the older version, of any size")
        << header(3, 0x40, 10) << QByteArray(4, '\xFF') + further << -1;
    QTest::newRow("one, cut in its size") << header(4, 0x40, 3) << further.left(3) << -1;
    QTest::newRow("the oldest version") << header(2, 0, 10) << further << 0;
    QTest::newRow("the oldest version, packed") << header(2, 0x40, 10) << further << -1;
    QTest::newRow("a version before") << header(1, 0, 10) << further << -1;
    QTest::newRow("a version to come") << header(5, 0, 10) << further << -1;
}

void TestTagPlaces::framesBeginBehindFurtherHeads()
{
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, body);
    ByteVector bytes = vectorOf(body);
    const std::optional<unsigned int> begin = id3v2::beginOfFrames(vectorOf(head), bytes);
    QTEST(begin ? int(*begin) : -1, "begin");
    QCOMPARE(arrayOf(bytes), body);
}

void TestTagPlaces::framesGoUpToTheEnd_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("frames");
    QTest::addColumn<int>("end");
    const QByteArray one = frame3("TPE1", "\3Singer");
    QTest::newRow("one") << 3 << one << QByteArray("TPE1 7") << 17;
    QTest::newRow("an empty one at the end")
        << 3 << one + frame3("TIT2", "") << QByteArray("TPE1 7 TIT2 0") << 27;
    QTest::newRow("one that is too long") << 3 << one + one.chopped(1) << QByteArray("TPE1 7") << 17;
    QTest::newRow("less than a head") << 3 << one + one.left(9) << QByteArray("TPE1 7") << 17;
    QTest::newRow("filling") << 3 << one + QByteArray(20, '\0') << QByteArray("TPE1 7") << 17;
    QTest::newRow("no more wanted") << 3 << frame3("STOP", "") + one << QByteArray("STOP 0") << 10;
    QTest::newRow("the oldest version")
        << 2 << QByteArray("TP1\0\0\x02\3xTT2\0\0\0", 14) << QByteArray("TP1 2 TT2 0") << 14;
    QTest::newRow("nothing") << 4 << QByteArray() << QByteArray() << 0;
}

void TestTagPlaces::framesGoUpToTheEnd()
{
    QFETCH(int, version);
    QFETCH(QByteArray, body);
    const auto [frames, end] = framesIn(version, body);
    QTEST(frames, "frames");
    QTEST(end, "end");
}

void TestTagPlaces::sizesOfTheNewestVersionAreTakenAsTheyGoOn_data()
{
    QTest::addColumn<QByteArray>("behind");
    QTest::addColumn<int>("size");
    // Two hundred bytes, in eight bits, which are 72 in seven.
    QTest::newRow("another frame") << frame("TIT2", "\3Title") << 200;
    QTest::newRow("filling") << QByteArray(20, '\0') << 200;
    QTest::newRow("the end") << QByteArray() << 200;
    QTest::newRow("something else") << QByteArray("no frame") << 72;
    QTest::newRow("less than an id") << QByteArray("TIT") << 72;
}

void TestTagPlaces::sizesOfTheNewestVersionAreTakenAsTheyGoOn()
{
    QFETCH(QByteArray, behind);
    QFETCH(int, size);
    const QByteArray head = "PRIV" + MediaBytes::big32(200) + QByteArray(2, '\0');
    const auto [frames, end] = framesIn(4, head + QByteArray(200, '?') + behind);
    QVERIFY2(frames.startsWith("PRIV " + QByteArray::number(size)), frames.constData());
    // Where it goes on as the version has it, it is so.
    QByteArray body(200, '?');
    body.replace(72, 4, "TALB");
    const auto [others, otherEnd] = framesIn(4, head + body + behind);
    QVERIFY2(others.startsWith("PRIV 72"), others.constData());
}

QTEST_GUILESS_MAIN(TestTagPlaces)
#include "tst_tagplaces.moc"
