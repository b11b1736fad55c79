// Fingerprints that outlive a run, and whatever may have become of their file.
#include "base/platform.h"
#include "collection/fingerprintcache.h"
#include "filebytes.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <memory>

using Fingerprint = FingerprintCache::Fingerprint;

class TestFingerprintCache : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void whatWasKeptIsFoundInTheNextRun();
    void ofAnotherStateNothingIsFound();
    void aTimeOfWholeSecondsNeedsThePath();
    void theNewestOneCounts();
    void itIsTheUsersAlone();
    void damageIsNoFingerprint_data();
    void damageIsNoFingerprint();
    void whatAKillCutShortIsTakenAway();
    void whatIsNoCacheMakesWay_data();
    void whatIsNoCacheMakesWay();
    void withoutAPlaceNothingIsKept_data();
    void withoutAPlaceNothingIsKept();
    void severalRunsAtOnceKeepAll();
    void whoeverHoldsTheLockIsWaitedForOnce();
    void aRunGoesOnInTheFileThatTookThePlace();
    void whatNobodyAskedForMakesRoom();
    void whatIsAskedForStays();

private:
    QString file() const { return m_folder->filePath("cache/fingerprints"); }
    std::string folder() const { return m_folder->filePath("cache").toStdString(); }
    static FileState state(std::uint64_t inode, std::int64_t modified = 1234567890123456789);
    static Fingerprint values(quint32 first, int count = 900);

    std::unique_ptr<QTemporaryDir> m_folder;
};

FileState TestFingerprintCache::state(std::uint64_t inode, std::int64_t modified)
{
    FileState state;
    state.there = true;
    state.file.device = 5;
    state.file.inode = inode;
    state.file.size = 4000000;
    state.file.modified = modified;
    state.file.regular = true;
    return state;
}

Fingerprint TestFingerprintCache::values(quint32 first, int count)
{
    Fingerprint made;
    for (int i = 0; i < count; ++i)
        made.append(first + quint32(i) * 77777);
    return made;
}

void TestFingerprintCache::whatWasKeptIsFoundInTheNextRun()
{
    {
        FingerprintCache cache(folder());
        QVERIFY(!cache.find("a", state(1)));
        QVERIFY(cache.keep("a", state(1), values(1)));
        QVERIFY(cache.keep("b", state(2), Fingerprint()));
        QCOMPARE(cache.find("a", state(1)).value_or(Fingerprint()), values(1));
    }
    FingerprintCache cache(folder());
    QCOMPARE(cache.find("a", state(1)).value_or(Fingerprint()), values(1));
    QCOMPARE(cache.find("elsewhere", state(1)).value_or(Fingerprint()), values(1)); // it was moved
    QVERIFY(cache.find("b", state(2)).has_value());
    QVERIFY(!cache.find("c", state(3)));
}

void TestFingerprintCache::ofAnotherStateNothingIsFound()
{
    FingerprintCache cache(folder());
    QVERIFY(cache.keep("a", state(1), values(1)));
    QVERIFY(!cache.find("a", state(1, 1234567890123456788)));
    FileState other = state(1);
    ++other.file.size;
    QVERIFY(!cache.find("a", other));
    other = state(1);
    ++other.file.device;
    QVERIFY(!cache.find("a", other));
    other = state(1);
    other.there = false;
    QVERIFY(!cache.find("a", other));
    QVERIFY(!cache.keep("a", other, values(1)));
}

void TestFingerprintCache::aTimeOfWholeSecondsNeedsThePath()
{
    FingerprintCache cache(folder());
    QVERIFY(cache.keep("a", state(1, 5000000000), values(1)));
    QVERIFY(cache.find("a", state(1, 5000000000)).has_value());
    QVERIFY(!cache.find("b", state(1, 5000000000)));
}

void TestFingerprintCache::theNewestOneCounts()
{
    {
        FingerprintCache cache(folder());
        QVERIFY(cache.keep("a", state(1), values(1)));
        QVERIFY(cache.keep("a", state(1), values(2)));
        QCOMPARE(cache.find("a", state(1)).value_or(Fingerprint()), values(2));
    }
    QCOMPARE(FingerprintCache(folder()).find("a", state(1)).value_or(Fingerprint()), values(2));
}

void TestFingerprintCache::itIsTheUsersAlone()
{
    QVERIFY(FingerprintCache(folder()).keep("a", state(1), values(1)));
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    for (const QString& path : {file(), QFileInfo(file()).path()})
        QCOMPARE(int(QFile::permissions(path) & others), 0);
}

void TestFingerprintCache::damageIsNoFingerprint_data()
{
    QTest::addColumn<int>("place");
    QTest::newRow("the mark of the first one") << 26;
    QTest::newRow("its inode") << 45;
    QTest::newRow("its count") << 75;
    QTest::newRow("its values") << 200;
    QTest::newRow("the first line") << 3;
}

void TestFingerprintCache::damageIsNoFingerprint()
{
    QFETCH(int, place);
    {
        FingerprintCache cache(folder());
        for (std::uint64_t song = 1; song <= 3; ++song)
            QVERIFY(cache.keep("a", state(song), values(quint32(song))));
    }
    QByteArray bytes = Fixtures::readBytes(file());
    bytes[place] = char(~bytes[place]);
    Fixtures::saveBytes(bytes, file());
    FingerprintCache cache(folder());
    QVERIFY(!cache.find("a", state(1)));
    for (std::uint64_t song = 1; song <= 3; ++song) {
        const auto found = cache.find("a", state(song));
        QVERIFY(!found || *found == values(quint32(song)));
        QVERIFY(cache.keep("a", state(song), values(quint32(song))));
    }
    FingerprintCache next(folder());
    for (std::uint64_t song = 1; song <= 3; ++song)
        QCOMPARE(next.find("a", state(song)).value_or(Fingerprint()), values(quint32(song)));
}

void TestFingerprintCache::whatAKillCutShortIsTakenAway()
{
    {
        FingerprintCache cache(folder());
        QVERIFY(cache.keep("a", state(1), values(1)));
        QVERIFY(cache.keep("a", state(2), values(2)));
    }
    const QByteArray whole = Fixtures::readBytes(file());
    for (const int cut : {1, 3000, 3640}) { // within the values, and within what stands before them
        Fixtures::saveBytes(whole.left(whole.size() - cut), file());
        FingerprintCache cache(folder());
        QCOMPARE(cache.find("a", state(1)).value_or(Fingerprint()), values(1));
        QVERIFY(!cache.find("a", state(2)));
        QVERIFY(cache.keep("a", state(2), values(2)));
        QVERIFY(Fixtures::readBytes(file()) == whole);
    }
}

void TestFingerprintCache::whatIsNoCacheMakesWay_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a text") << QByteArray("something else\n");
    QTest::newRow("of another version") << QByteArray("melodrift fingerprints 0\nabc");
    QTest::newRow("rubbish") << QByteArray(100000, '\x9C');
}

void TestFingerprintCache::whatIsNoCacheMakesWay()
{
    QFETCH(QByteArray, bytes);
    QDir().mkpath(QFileInfo(file()).path());
    Fixtures::saveBytes(bytes, file());
    QVERIFY(FingerprintCache(folder()).keep("a", state(1), values(1)));
    QVERIFY(FingerprintCache(folder()).find("a", state(1)).has_value());
}

void TestFingerprintCache::withoutAPlaceNothingIsKept_data()
{
    QTest::addColumn<QString>("obstacle");
    for (const char* const obstacle : {"no home", "a file", "a link", "a folder"})
        QTest::newRow(obstacle) << QString(obstacle);
}

void TestFingerprintCache::withoutAPlaceNothingIsKept()
{
    QFETCH(QString, obstacle);
    const QString target = m_folder->filePath("target");
    Fixtures::saveBytes("kept", target);
    if (obstacle == "a file")
        Fixtures::saveBytes("kept", m_folder->filePath("cache"));
    else
        QDir().mkpath(QFileInfo(file()).path());
    if (obstacle == "a link")
        QVERIFY(QFile::link(target, file()));
    else if (obstacle == "a folder")
        QVERIFY(QDir().mkpath(file()));
    FingerprintCache cache(obstacle == "no home" ? std::string() : folder());
    QVERIFY(!cache.find("a", state(1)));
    QVERIFY(!cache.keep("a", state(1), values(1)));
    QVERIFY(!cache.find("a", state(1)));
    QCOMPARE(Fixtures::readBytes(target), QByteArray("kept"));
}

void TestFingerprintCache::severalRunsAtOnceKeepAll()
{
    FingerprintCache one(folder());
    FingerprintCache other(folder());
    for (std::uint64_t song = 1; song <= 10; ++song)
        QVERIFY((song % 2 == 0 ? one : other).keep("a", state(song), values(quint32(song))));
    FingerprintCache next(folder());
    for (std::uint64_t song = 1; song <= 10; ++song)
        QCOMPARE(next.find("a", state(song)).value_or(Fingerprint()), values(quint32(song)));
}

void TestFingerprintCache::whoeverHoldsTheLockIsWaitedForOnce()
{
    FingerprintCache cache(folder());
    QVERIFY(cache.keep("a", state(1), values(1)));
    std::FILE* const held = base::openNoLink(folder() + "/lock");
    QVERIFY(held && base::lockFile(held));
    QVERIFY(!cache.keep("a", state(2), values(2)));
    std::fclose(held);
    QVERIFY(!cache.keep("a", state(2), values(2)));
    QVERIFY(cache.find("a", state(1)).has_value());
    QVERIFY(FingerprintCache(folder()).keep("a", state(2), values(2)));
}

void TestFingerprintCache::aRunGoesOnInTheFileThatTookThePlace()
{
    FingerprintCache one(folder());
    QVERIFY(one.keep("a", state(1), values(1)));
    QVERIFY(QFile::remove(file()));
    QVERIFY(one.keep("a", state(2), values(2)));
    FingerprintCache next(folder());
    QVERIFY(!next.find("a", state(1)));
    QVERIFY(next.find("a", state(2)).has_value());
}

void TestFingerprintCache::whatNobodyAskedForMakesRoom()
{
    constexpr std::int64_t most = 40000; // ten of them
    {
        FingerprintCache cache(folder(), most);
        for (std::uint64_t song = 1; song <= 10; ++song)
            QVERIFY(cache.keep("a", state(song), values(quint32(song))));
    }
    FingerprintCache cache(folder(), most);
    QVERIFY(cache.find("a", state(3)).has_value());
    QVERIFY(cache.keep("a", state(11), values(11)));
    QVERIFY(QFileInfo(file()).size() < 3 * 4000);
    for (const std::uint64_t song : {3, 11})
        QCOMPARE(cache.find("a", state(song)).value_or(Fingerprint()), values(quint32(song)));
    QVERIFY(!cache.find("a", state(1)));
}

void TestFingerprintCache::whatIsAskedForStays()
{
    constexpr std::int64_t most = 40000;
    FingerprintCache cache(folder(), most);
    for (std::uint64_t song = 1; song <= 20; ++song)
        QCOMPARE(cache.keep("a", state(song), values(quint32(song))), song <= 10);
    QVERIFY(QFileInfo(file()).size() <= most);
    FingerprintCache next(folder(), most);
    for (std::uint64_t song = 1; song <= 20; ++song)
        QCOMPARE(next.find("a", state(song)).has_value(), song <= 10);
}

QTEST_GUILESS_MAIN(TestFingerprintCache)
#include "tst_fingerprintcache.moc"
