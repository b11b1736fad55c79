#include "base/filebytes.h"
#include "base/platform.h"

#include <QTemporaryDir>
#include <QtTest>

using base::FileBytes;
using base::MemoryFile;
using base::SystemFile;

/// A file in memory is like one of the system.
class TestFileBytes : public QObject
{
    Q_OBJECT

private slots:
    void bytesAreReadAndWrittenByPlace_data() { addKinds(); }
    void bytesAreReadAndWrittenByPlace();
    void writingBehindTheEndLeavesZeros_data() { addKinds(); }
    void writingBehindTheEndLeavesZeros();
    void aFileIsMadeShorterAndLonger_data() { addKinds(); }
    void aFileIsMadeShorterAndLonger();
    void whatIsNoFileHasNoSize();
    void holesAreToldAndMade();
    void aFileIsLockedOnce();
    void statesAreTheSameInAllOrNot();
    void aFullMemoryIsLikeAFullDisk();

private:
    static void addKinds()
    {
        QTest::addColumn<bool>("inMemory");
        QTest::newRow("of the system") << false;
        QTest::newRow("in memory") << true;
    }
    std::unique_ptr<FileBytes> fileWith(const QByteArray& bytes) const
    {
        QFETCH(bool, inMemory);
        if (inMemory)
            return std::make_unique<MemoryFile>(bytes.toStdString());
        QFile file(m_folder.filePath("file"));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write a file");
        file.close();
        return SystemFile::open(file.fileName().toStdString(), true);
    }

    QTemporaryDir m_folder;
};

static QByteArray readAt(const FileBytes& file, qint64 place, int count)
{
    QByteArray bytes(count, '?');
    bytes.truncate(int(file.readAt(place, bytes.data(), size_t(count))));
    return bytes;
}

void TestFileBytes::bytesAreReadAndWrittenByPlace()
{
    const auto file = fileWith("harbour");
    QCOMPARE(qint64(file->size().value_or(-1)), qint64(7));
    QCOMPARE(readAt(*file, 0, 7), QByteArray("harbour"));
    QCOMPARE(readAt(*file, 4, 100), QByteArray("our"));
    QCOMPARE(readAt(*file, 7, 1), QByteArray());
    QCOMPARE(readAt(*file, 1000, 1), QByteArray());
    QCOMPARE(file->writeAt(5, "---", 3), size_t(3));
    QCOMPARE(readAt(*file, 0, 100), QByteArray("harbo---"));
    QCOMPARE(qint64(file->size().value_or(-1)), qint64(8));
    QVERIFY(file->sync());
}

void TestFileBytes::writingBehindTheEndLeavesZeros()
{
    const auto file = fileWith("ab");
    QCOMPARE(file->writeAt(4, "", 0), size_t(0));
    QCOMPARE(qint64(file->size().value_or(-1)), qint64(2));
    QCOMPARE(file->writeAt(4, "ef", 2), size_t(2));
    QCOMPARE(readAt(*file, 0, 100), QByteArray("ab\0\0ef", 6));
}

void TestFileBytes::aFileIsMadeShorterAndLonger()
{
    const auto file = fileWith("harbour");
    QVERIFY(file->truncateTo(3));
    QCOMPARE(readAt(*file, 0, 100), QByteArray("har"));
    QVERIFY(file->truncateTo(5));
    QCOMPARE(readAt(*file, 0, 100), QByteArray("har\0\0", 5));
    QCOMPARE(qint64(file->size().value_or(-1)), qint64(5));
}

void TestFileBytes::whatIsNoFileHasNoSize()
{
    QVERIFY(!SystemFile::open(m_folder.filePath("nowhere").toStdString(), false));
    const auto folder = SystemFile::open(m_folder.path().toStdString(), false);
    QVERIFY(!folder || !folder->size());
}

void TestFileBytes::holesAreToldAndMade()
{
    constexpr qint64 block = 64 * 1024;
    QFile sparse(m_folder.filePath("sparse"));
    QVERIFY(sparse.open(QIODevice::WriteOnly) && sparse.resize(8 * block));
    QVERIFY(sparse.seek(4 * block) && sparse.write("data", 4) == 4);
    sparse.close();
    const auto file = SystemFile::open(sparse.fileName().toStdString(), true);
    QVERIFY(file);
    if (!file->isHole(0, block))
        QSKIP("holes are not told here");
    QVERIFY(file->isHole(block, 3 * block));
    QVERIFY(!file->isHole(block, 3 * block + 1));
    QVERIFY(!file->isHole(4 * block, 1));
    QVERIFY(file->isHole(5 * block, block));
    QVERIFY(file->isHole(100 * block, block));
    QVERIFY(file->makeHole(4 * block, block));
    QVERIFY(file->isHole(0, 8 * block));
    QCOMPARE(qint64(file->size().value_or(-1)), 8 * block);
    QVERIFY(file->makeHole(8 * block, block));
    QCOMPARE(qint64(file->size().value_or(-1)), 9 * block);
}

void TestFileBytes::aFileIsLockedOnce()
{
    const std::string path = m_folder.filePath("locked").toStdString();
    QFile made(m_folder.filePath("locked"));
    QVERIFY(made.open(QIODevice::WriteOnly));
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> one(base::openFile(path, true), std::fclose);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> other(base::openFile(path, true), std::fclose);
    QVERIFY(one && other);
    QVERIFY(base::lockFile(one.get()));
    QVERIFY(!base::lockFile(other.get()));
}

void TestFileBytes::statesAreTheSameInAllOrNot()
{
    base::FileState state;
    QVERIFY(!base::stateOf(m_folder.filePath("nowhere").toStdString(), state));
    state.device = 1;
    state.inode = 2;
    state.size = 3;
    state.modified = 4;
    state.changed = 5;
    QVERIFY(state == base::FileState(state));
    std::vector<base::FileState> others(5, state);
    others[0].device = 9;
    others[1].inode = 9;
    others[2].size = 9;
    others[3].modified = 9;
    others[4].changed = 9;
    for (const base::FileState& other : others)
        QVERIFY(!(state == other));
}

void TestFileBytes::aFullMemoryIsLikeAFullDisk()
{
    MemoryFile file("abcd", 6);
    QCOMPARE(file.writeAt(4, "efgh", 4), size_t(2));
    QCOMPARE(file.writeAt(6, "g", 1), size_t(0));
    QVERIFY(!file.truncateTo(7));
    QCOMPARE(file.bytes(), std::string("abcdef"));
}

QTEST_GUILESS_MAIN(TestFileBytes)
#include "tst_filebytes.moc"
