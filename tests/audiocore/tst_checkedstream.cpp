// What the tag library reads and writes through: bytes moved to the right places, an end to all work, and no
// failure that is forgotten.
#include "base/filebytes.h"
#include "media/checkedstream.h"

#include <QTemporaryDir>
#include <QtTest>

using audiocore::CheckedStream;
using TagLib::ByteVector;
using Mode = CheckedStream::Mode;

class TestCheckedStream : public QObject
{
    Q_OBJECT

private slots:
    void bytesArePutInAndTakenOut_data();
    void bytesArePutInAndTakenOut();
    void whatIsPutInBehindTheEndGoesToTheEnd();
    void smallReadsComeOutOfOneBlock();
    void readingBackwardsReadsAgain();
    void whatWasWrittenIsRead();
    void placesAreSoughtFromThreePoints();
    void aScreenSeesWhatIsRead();
    void aStreamForReadingWritesNothing();
    void aWriteThatFailsIsRemembered();
    void aMoveThatFailsEnds();
    void aCutThatFailsIsRemembered();
    void aReadThatFailsIsRemembered();
    void aSyncThatFailsIsTold();
    void holesStayHoles();
    void whatIsNoHoleIsMoved();
    void stepsComeToAnEnd_data();
    void stepsComeToAnEnd();
    void bytesComeToAnEnd_data();
    void bytesComeToAnEnd();
    void aHugeBlockIsNotRead();
    void whoeverGoesOnForEverIsThrownOut();
    void whatIsNoFileIsNotOpen();
};

namespace {
constexpr int block = 256 * 1024; // what is moved at once
constexpr int buffer = 4 * 1024;  // what is read for a small piece

/// A file in memory that fails, is sparse, or is large, as the test wants it.
class ToldFile final : public base::FileBytes
{
public:
    explicit ToldFile(const QByteArray& bytes) : m_memory(bytes.toStdString()) {}

    std::optional<std::int64_t> size() const override
    {
        return isRegular ? std::optional(said < 0 ? *m_memory.size() : said) : std::nullopt;
    }
    std::size_t readAt(std::int64_t offset, void* bytes, std::size_t count) const override
    {
        ++reads;
        const std::size_t got = m_memory.readAt(offset, bytes, count);
        return readFails && got > 0 ? got - 1 : got;
    }
    std::size_t writeAt(std::int64_t offset, const void* bytes, std::size_t count) override
    {
        ++writes;
        return m_memory.writeAt(offset, bytes, writeFails ? count - 1 : count);
    }
    bool isHole(std::int64_t, std::int64_t) const override { return sparse; }
    bool makeHole(std::int64_t offset, std::int64_t count) override
    {
        ++holes;
        return makesHoles && m_memory.writeAt(offset, std::string(std::size_t(count), 'o').data(),
                                              std::size_t(count)) == std::size_t(count);
    }
    bool truncateTo(std::int64_t size) override { return !cutFails && m_memory.truncateTo(size); }
    bool sync() override { return !syncFails; }

    QByteArray bytes() const { return QByteArray::fromStdString(m_memory.bytes()); }

    std::int64_t said = -1; ///< the size; as it is when negative
    bool isRegular = true;
    bool readFails = false;
    bool writeFails = false;
    bool cutFails = false;
    bool syncFails = false;
    bool sparse = false;
    bool makesHoles = false;
    mutable int reads = 0;
    int writes = 0;
    int holes = 0;

private:
    base::MemoryFile m_memory;
};

/// No two places look alike for long.
QByteArray pattern(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = char(i * 31 + i / 251);
    return bytes;
}

ByteVector vectorOf(const QByteArray& bytes)
{
    return ByteVector(bytes.constData(), unsigned(bytes.size()));
}

QByteArray arrayOf(const ByteVector& bytes)
{
    return QByteArray(bytes.data(), int(bytes.size()));
}
} // namespace

void TestCheckedStream::bytesArePutInAndTakenOut_data()
{
    QTest::addColumn<int>("tail");
    QTest::addColumn<int>("added");
    QTest::addColumn<int>("replaced");
    for (const int tail : {0, 1, block - 1, block, block + 1, 3 * block + 7})
        for (const auto& [added, replaced] :
             {std::pair(0, 10), std::pair(10, 0), std::pair(10, 10), std::pair(3, 300), std::pair(300, 3),
              std::pair(block + 5, 1), std::pair(1, block + 5)})
            QTest::addRow("%d behind, %d for %d", tail, added, replaced) << tail << added << replaced;
}

void TestCheckedStream::bytesArePutInAndTakenOut()
{
    QFETCH(int, tail);
    QFETCH(int, added);
    QFETCH(int, replaced);
    const QByteArray old = pattern(100 + replaced + tail);
    const QByteArray put(added, '!');
    ToldFile file(old);
    CheckedStream stream(file, "file", Mode::ReadWrite);
    if (added == 0)
        stream.removeBlock(100, unsigned(replaced));
    else
        stream.insert(vectorOf(put), 100, unsigned(replaced));
    QVERIFY(file.bytes() == QByteArray(old).replace(100, replaced, put));
    QCOMPARE(int(stream.length()), 100 + added + tail);
    QCOMPARE(int(stream.tell()), 100 + added);
    QVERIFY(stream.flushToDevice());
    // What is as long as before stays where it is.
    if (added == replaced)
        QCOMPARE(file.writes, 1);
}

void TestCheckedStream::whatIsPutInBehindTheEndGoesToTheEnd()
{
    ToldFile file("abc");
    CheckedStream stream(file, "file", Mode::ReadWrite);
    stream.insert("de", 1000, 5);
    QCOMPARE(file.bytes(), QByteArray("abcde"));
    stream.insert("C", 2, 1000);
    QCOMPARE(file.bytes(), QByteArray("abC"));
    QCOMPARE(int(stream.length()), 3);
}

void TestCheckedStream::smallReadsComeOutOfOneBlock()
{
    const QByteArray bytes = pattern(3 * buffer);
    ToldFile file(bytes);
    CheckedStream stream(file, "file", Mode::Read);
    for (int place = 0; place < buffer; place += 16)
        QCOMPARE(arrayOf(stream.readBlock(16)), bytes.mid(place, 16));
    QCOMPARE(file.reads, 1);
    QCOMPARE(arrayOf(stream.readAt(buffer - 8, 16)), bytes.mid(buffer - 8, 16));
    QCOMPARE(file.reads, 2);
    QCOMPARE(arrayOf(stream.readAt(0, buffer)), bytes.left(buffer));
    QCOMPARE(arrayOf(stream.readAt(buffer, 8)),
             bytes.mid(buffer, 8)); // what was read at once is no such block
    QCOMPARE(file.reads, 3);
    QCOMPARE(arrayOf(stream.readAt(2 * buffer + 100, 2 * buffer)), bytes.mid(2 * buffer + 100));
    QCOMPARE(int(stream.tell()), bytes.size());
    QVERIFY(stream.readBlock(1).isEmpty());
    QVERIFY(!stream.readFailed());
}

void TestCheckedStream::readingBackwardsReadsAgain()
{
    const QByteArray bytes = pattern(3 * buffer);
    ToldFile file(bytes);
    CheckedStream stream(file, "file", Mode::Read);
    QCOMPARE(arrayOf(stream.readAt(buffer, 10)), bytes.mid(buffer, 10));
    QCOMPARE(arrayOf(stream.readAt(buffer, 10)), bytes.mid(buffer, 10));
    QCOMPARE(file.reads, 1);
    QCOMPARE(arrayOf(stream.readAt(buffer - 1, 10)), bytes.mid(buffer - 1, 10));
}

void TestCheckedStream::whatWasWrittenIsRead()
{
    ToldFile file("harbour");
    CheckedStream stream(file, "file", Mode::ReadWrite);
    QCOMPARE(arrayOf(stream.readBlock(3)), QByteArray("har"));
    stream.writeBlock("BOUR!");
    QCOMPARE(int(stream.tell()), 8);
    QCOMPARE(int(stream.length()), 8);
    QCOMPARE(arrayOf(stream.readAt(0, 100)), QByteArray("harBOUR!"));
    stream.truncate(4);
    QCOMPARE(int(stream.length()), 4);
    QCOMPARE(arrayOf(stream.readAt(0, 100)), QByteArray("harB"));
    stream.seek(0);
    stream.writeBlock(ByteVector());
    QCOMPARE(file.writes, 1);
}

void TestCheckedStream::placesAreSoughtFromThreePoints()
{
    ToldFile file("harbour");
    CheckedStream stream(file, "file", Mode::Read);
    stream.seek(3);
    QCOMPARE(int(stream.tell()), 3);
    stream.seek(2, TagLib::IOStream::Current);
    QCOMPARE(int(stream.tell()), 5);
    stream.seek(-4, TagLib::IOStream::Current);
    QCOMPARE(int(stream.tell()), 1);
    stream.seek(-2, TagLib::IOStream::End);
    QCOMPARE(int(stream.tell()), 5);
    stream.seek(-100, TagLib::IOStream::End);
    QCOMPARE(int(stream.tell()), 0);
    const auto most = std::numeric_limits<audiocore::StreamOffset>::max();
    stream.seek(most, TagLib::IOStream::End);
    QCOMPARE(qint64(stream.tell()), qint64(most / 2));
    QVERIFY(stream.readBlock(1).isEmpty());
    stream.seek(-most, TagLib::IOStream::Current);
    QCOMPARE(int(stream.tell()), 0);
}

void TestCheckedStream::aScreenSeesWhatIsRead()
{
    class Blind final : public audiocore::StreamScreen
    {
    public:
        ByteVector read(CheckedStream& stream, unsigned long length) override
        {
            return ByteVector(stream.readUnscreened(length).size(), '*');
        }
    };
    Blind blind;
    ToldFile file("harbour");
    CheckedStream stream(file, "file", Mode::Read);
    stream.setScreen(&blind);
    QCOMPARE(arrayOf(stream.readBlock(3)), QByteArray("***"));
    stream.setScreen(nullptr);
    QCOMPARE(arrayOf(stream.readBlock(3)), QByteArray("bou"));
}

void TestCheckedStream::aStreamForReadingWritesNothing()
{
    ToldFile file("harbour");
    CheckedStream stream(file, "file", Mode::Read);
    QVERIFY(stream.readOnly());
    stream.writeBlock("abc");
    stream.truncate(2);
    stream.insert("abc", 0, 5);
    QCOMPARE(file.bytes(), QByteArray("harbour"));
    QCOMPARE(int(stream.length()), 7);
    QVERIFY(!CheckedStream(file, "file", Mode::ReadWrite).readOnly());
}

void TestCheckedStream::aWriteThatFailsIsRemembered()
{
    ToldFile file("harbour");
    CheckedStream stream(file, "file", Mode::ReadWrite);
    QVERIFY(stream.flushToDevice());
    file.writeFails = true;
    stream.writeBlock("abc");
    file.writeFails = false;
    stream.seek(0);
    stream.writeBlock("abc");
    QVERIFY(!stream.flushToDevice());
}

void TestCheckedStream::aMoveThatFailsEnds()
{
    for (const auto& [added, replaced] : {std::pair(1, 10), std::pair(10, 1)}) {
        ToldFile file(pattern(4 * block));
        CheckedStream stream(file, "file", Mode::ReadWrite);
        file.writeFails = true;
        stream.insert(ByteVector(unsigned(added), '!'), 0, unsigned(replaced));
        QCOMPARE(file.writes, 2); // the first piece, and what is put in
        QVERIFY(!stream.flushToDevice());
    }
}

void TestCheckedStream::aCutThatFailsIsRemembered()
{
    ToldFile file("harbour");
    CheckedStream stream(file, "file", Mode::ReadWrite);
    file.cutFails = true;
    stream.truncate(2);
    file.cutFails = false;
    QVERIFY(!stream.flushToDevice());
}

void TestCheckedStream::aReadThatFailsIsRemembered()
{
    for (const int size : {10, 2 * buffer}) {
        ToldFile file(pattern(size));
        CheckedStream stream(file, "file", Mode::ReadWrite);
        file.readFails = true;
        QCOMPARE(int(stream.readBlock(unsigned(size)).size()), size - 1);
        file.readFails = false;
        QVERIFY(stream.readFailed());
        stream.readAt(0, 1);
        QVERIFY(stream.readFailed());
        QVERIFY(!stream.flushToDevice());
    }
}

void TestCheckedStream::aSyncThatFailsIsTold()
{
    ToldFile file("harbour");
    CheckedStream stream(file, "file", Mode::ReadWrite);
    file.syncFails = true;
    QVERIFY(!stream.flushToDevice());
}

void TestCheckedStream::holesStayHoles()
{
    for (const auto& [added, replaced] : {std::pair(0, 10), std::pair(10, 0)}) {
        ToldFile file(QByteArray(20 + 3 * block, '\0'));
        CheckedStream stream(file, "file", Mode::ReadWrite);
        stream.readBlock(1);
        const int reads = file.reads;
        file.sparse = file.makesHoles = true;
        stream.insert(ByteVector(unsigned(added), '!'), 10, unsigned(replaced));
        QCOMPARE(file.reads, reads);
        QCOMPARE(file.holes, added > 0 ? 4 : 3);
        QCOMPARE(int(stream.length()), 20 + 3 * block + added - replaced);
        QCOMPARE(arrayOf(stream.readAt(15 + unsigned(added), 4)), QByteArray("oooo"));
        QVERIFY(stream.flushToDevice());
    }
}

void TestCheckedStream::whatIsNoHoleIsMoved()
{
    const QByteArray bytes = pattern(20 + block);
    ToldFile file(bytes);
    file.sparse = true; // and no hole can be made
    CheckedStream(file, "file", Mode::ReadWrite).insert("!", 10, 0);
    QVERIFY(file.bytes() == QByteArray(bytes).insert(10, '!'));
    ToldFile full(bytes);
    full.makesHoles = true; // and nothing is one
    CheckedStream(full, "file", Mode::ReadWrite).insert("!", 10, 0);
    QVERIFY(full.bytes() == QByteArray(bytes).insert(10, '!'));
    QCOMPARE(full.holes, 0);
}

void TestCheckedStream::stepsComeToAnEnd_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("writing");
    QTest::addColumn<qint64>("most");
    QTest::newRow("a small file") << qint64(6400) << false << qint64(10100);
    QTest::newRow("a large file") << qint64(1) * (1 << 30) << false << qint64(300000);
    QTest::newRow("a small file that is written") << qint64(6400) << true << qint64(10500);
}

void TestCheckedStream::stepsComeToAnEnd()
{
    QFETCH(qint64, size);
    QFETCH(bool, writing);
    QFETCH(qint64, most);
    ToldFile file("harbour");
    file.said = size;
    CheckedStream stream(file, "file", writing ? Mode::ReadWrite : Mode::Read);
    const std::int64_t before = CheckedStream::stepsOfThread();
    for (int step = 1; step < most; ++step)
        stream.seek(0);
    QCOMPARE(arrayOf(stream.readBlock(3)), QByteArray("har"));
    QCOMPARE(qint64(stream.steps()), most);
    QVERIFY(!stream.ranDry());
    QVERIFY(stream.flushToDevice());
    QVERIFY(stream.readBlock(3).isEmpty());
    QVERIFY(stream.ranDry());
    QVERIFY(!stream.flushToDevice());
    QCOMPARE(qint64(CheckedStream::stepsOfThread() - before), most + 1);
    stream.writeBlock("abc");
    QCOMPARE(file.bytes(), QByteArray("harbour"));
}

void TestCheckedStream::bytesComeToAnEnd_data()
{
    QTest::addColumn<bool>("writing");
    QTest::addColumn<int>("most");
    QTest::newRow("a file that is read") << false << 16 + 8;
    QTest::newRow("a file that is written") << true << 256 + 16;
}

void TestCheckedStream::bytesComeToAnEnd()
{
    QFETCH(bool, writing);
    QFETCH(int, most);
    constexpr unsigned megabyte = 1 << 20;
    ToldFile file(QByteArray(megabyte, 'x'));
    CheckedStream stream(file, "file", writing ? Mode::ReadWrite : Mode::Read);
    for (int times = 0; times < most; ++times)
        QCOMPARE(stream.readAt(0, megabyte).size(), megabyte);
    QVERIFY(!stream.ranDry());
    QCOMPARE(qint64(stream.bytes()), qint64(most) * megabyte);
    QVERIFY(stream.readAt(0, 1).isEmpty());
    QVERIFY(stream.ranDry());
    QCOMPARE(qint64(stream.bytes()), qint64(most) * megabyte + 1);
    QVERIFY(stream.readAt(0, megabyte).isEmpty());
    QCOMPARE(qint64(stream.bytes()), qint64(most) * megabyte + 1);
}

void TestCheckedStream::aHugeBlockIsNotRead()
{
    constexpr unsigned largest = 96 << 20;
    ToldFile file("harbour");
    file.said = qint64(1) << 32;
    CheckedStream stream(file, "file", Mode::Read);
    QCOMPARE(arrayOf(stream.readBlock(largest)), QByteArray("harbour"));
    QVERIFY(!stream.ranDry());
    QVERIFY(stream.readAt(0, largest + 1).isEmpty());
    QVERIFY(stream.ranDry());
}

void TestCheckedStream::whoeverGoesOnForEverIsThrownOut()
{
    ToldFile file("");
    CheckedStream stream(file, "file", Mode::Read);
    constexpr int most = 10000 + 500000;
    for (int step = 0; step < most; ++step)
        stream.seek(0);
    QVERIFY_EXCEPTION_THROWN(stream.seek(0), audiocore::EndlessReading);
}

void TestCheckedStream::whatIsNoFileIsNotOpen()
{
    ToldFile file("harbour");
    file.isRegular = false;
    CheckedStream stream(file, "a name", Mode::ReadWrite);
    QVERIFY(!stream.isOpen());
    QCOMPARE(stream.openError(), std::string("not a regular file"));
    QCOMPARE(int(stream.length()), 0);
    QVERIFY(stream.readBlock(3).isEmpty());
    stream.writeBlock("abc");
    stream.truncate(1);
    QVERIFY(!stream.flushToDevice());
    QCOMPARE(file.bytes(), QByteArray("harbour"));
    const QTemporaryDir folder;
    const CheckedStream missing(folder.filePath("missing").toStdString(), Mode::Read);
    QVERIFY(!missing.isOpen());
    QVERIFY(!missing.openError().empty());
}

QTEST_GUILESS_MAIN(TestCheckedStream)
#include "tst_checkedstream.moc"
