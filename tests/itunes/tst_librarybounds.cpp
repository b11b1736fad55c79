#include "sanitized.h"
#include "songlibrary.h"

#include <QtTest>

#include <atomic>
#include <functional>
#include <thread>

using LibraryCalls::Reading;

namespace {
constexpr qint64 megabyte = 1024 * 1024;

/// A line of /proc/self/status in bytes.
qint64 statusOf(const QByteArray& key)
{
    const QByteArray status = LibraryCalls::contentOf("/proc/self/status");
    const int at = status.indexOf(key + ':');
    return status.mid(at + key.size() + 1, status.indexOf("kB", at) - at - key.size() - 1)
               .trimmed()
               .toLongLong() *
           1024;
}

/// By how much the process grew at most while it read.
qint64 growthOf(const std::function<void()>& work)
{
    QFile reset("/proc/self/clear_refs");
    if (!reset.open(QIODevice::WriteOnly) || reset.write("5") != 1)
        return 0;
    reset.close();
    const qint64 before = statusOf("VmRSS");
    work();
    return statusOf("VmHWM") - before;
}

QByteArray libraryAround(const QByteArray& entries)
{
    return "<plist><dict><key>Tracks</key><dict>" + entries + "</dict></dict></plist>";
}

QByteArray inUtf16(const QByteArray& latin, bool little)
{
    QByteArray wide(latin.size() * 2, '\0');
    for (int i = 0; i < latin.size(); ++i)
        wide[2 * i + (little ? 0 : 1)] = latin.at(i);
    return wide;
}
} // namespace

/// Whatever a library file says, reading it takes memory and steps within bounds.
class TestLibraryBounds : public QObject
{
    Q_OBJECT

private slots:
    void init() { AudioFile::takeLog(); }
    void cleanup() { closeITunesLibrary(); }
    void bombsAreRefused_data();
    void bombsAreRefused();
    void aHugeFileIsNotLookedAt();
    void smallEntriesAreNoBomb();
    void longTextsOfTwoByteEncodingsArrive_data();
    void longTextsOfTwoByteEncodingsArrive();
    void aFileThatGrowsAndShrinksIsReadWholeOrNotAtAll();
    void theReasonIsThereForTheCaller();
    void withoutAHomeThereAreNoUsualPlaces();

private:
    Reading read(const QByteArray& bytes)
    {
        return LibraryCalls::read(Fixtures::writeLibrary(m_folder.filePath("Library.xml"), bytes));
    }

    QTemporaryDir m_folder;
};

void TestLibraryBounds::bombsAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("refused"); // or harmless
    const QByteArray declared = "<!DOCTYPE plist [";
    const QByteArray end = "]><plist><dict></dict></plist>";
    QTest::newRow("entities that do not end")
        << declared + QByteArray("<!ENTITY").repeated(16000) + end << true;
    QTest::newRow("named entities that do not end")
        << declared + QByteArray("<!ENTITY a").repeated(26000) + end << false;
    QTest::newRow("entities without a value")
        << declared + QByteArray("<!ENTITY a ").repeated(26000) + end << false;
    QTest::newRow("an entity of a long name")
        << declared + "<!ENTITY " + QByteArray(65, 'a') + " 'b'>" + end << true;
    QTest::newRow("long names in each other")
        << (QByteArray("<") + QByteArray(1000000, 'a') + '>').repeated(100) << true;
    QTest::newRow("empty tracks") << libraryAround(QByteArray("<key>1</key><dict/>").repeated(2000000))
                                  << true;
}

void TestLibraryBounds::bombsAreRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, refused);
    Fixtures::writeLibrary(m_folder.filePath("Library.xml"), bytes);
    Reading reading;
    const qint64 growth = growthOf([&] { reading = LibraryCalls::read(m_folder.filePath("Library.xml")); });
    QCOMPARE(reading.count, 0);
    QCOMPARE(AudioFile::takeLog().size(), refused ? 1 : 0);
    if (!sanitized)
        QVERIFY2(growth < 64 * megabyte, qPrintable(QString::number(growth / megabyte)));
}

void TestLibraryBounds::aHugeFileIsNotLookedAt()
{
    const QString path = Fixtures::writeLibrary(m_folder.filePath("Library.xml"), "<plist>");
    QVERIFY(QFile::resize(path, 40000 * megabyte));
    QCOMPARE(LibraryCalls::read(path).count, 0);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().contains("larger"), qPrintable(log.first()));
    QFile::remove(path);
}

void TestLibraryBounds::smallEntriesAreNoBomb()
{
    const QByteArray entry = "<key>1</key><dict><key>Name</key><string>A</string></dict>";
    QCOMPARE(read(libraryAround(entry.repeated(10000))).count, 10000);
    QVERIFY(AudioFile::takeLog().isEmpty());
}

void TestLibraryBounds::longTextsOfTwoByteEncodingsArrive_data()
{
    QTest::addColumn<bool>("little");
    QTest::newRow("little") << true;
    QTest::newRow("big") << false;
}

void TestLibraryBounds::longTextsOfTwoByteEncodingsArrive()
{
    QFETCH(bool, little);
    constexpr int buffer = 256 * 1024;
    const int around = sanitized ? 12 : 40;
    for (int size = buffer - around; size < buffer + around; ++size) {
        const QByteArray entry =
            "<key>1</key><dict><key>Name</key><string>" + QByteArray(size, 'x') + "</string></dict>";
        const Reading reading = read(inUtf16(libraryAround(entry), little));
        QCOMPARE(reading.count, 1);
        QCOMPARE(qstrlen(reading.records[0].name), uint(size));
    }
}

void TestLibraryBounds::aFileThatGrowsAndShrinksIsReadWholeOrNotAtAll()
{
    const QByteArray whole =
        libraryAround(QByteArray("<key>1</key><dict><key>Name</key><string><![CDATA[A]]></string></dict>")
                          .repeated(8000)) +
        '\n';
    const QString path = Fixtures::writeLibrary(m_folder.filePath("Library.xml"), whole);
    std::atomic<bool> ends{false};
    std::thread other([&] {
        QFile file(path);
        (void)file.open(QIODevice::ReadWrite | QIODevice::Unbuffered);
        for (int i = 0; !ends; ++i) {
            const qint64 size = i % 3 == 0 ? whole.size() - 1 : whole.size() / 2 + i % 100;
            file.resize(size);
            file.seek(size);
            file.write(whole.mid(int(size)) + '\n');
        }
    });
    int torn = 0;
    for (int i = 0; i < 200; ++i) {
        const int count = LibraryCalls::read(path).count;
        torn += count != 0 && count != 8000;
    }
    ends = true;
    other.join();
    QCOMPARE(torn, 0);
    QCOMPARE(read(whole).count, 8000);
}

void TestLibraryBounds::theReasonIsThereForTheCaller()
{
    read(libraryAround(""));
    QCOMPARE(QByteArray(iTunesLibraryProblem()), QByteArray());
    read("<plist>");
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY(!QByteArray(iTunesLibraryProblem()).isEmpty());
    QVERIFY2(log.first().contains(QString::fromUtf8(iTunesLibraryProblem())), iTunesLibraryProblem());
    read(libraryAround(""));
    QCOMPARE(QByteArray(iTunesLibraryProblem()), QByteArray());
}

void TestLibraryBounds::withoutAHomeThereAreNoUsualPlaces()
{
    QVERIFY(QDir(m_folder.path()).mkpath("Music/iTunes"));
    Fixtures::writeLibrary(m_folder.filePath("Music/iTunes/iTunes Library.xml"),
                           Fixtures::itunesLibrary({Fixtures::itunesTrack(0)}));
    const QByteArray home = qgetenv("HOME");
    const QByteArray named = qgetenv("MELODRIFT_ITUNES_LIBRARY");
    const QString before = QDir::currentPath();
    qunsetenv("MELODRIFT_ITUNES_LIBRARY");
    QDir::setCurrent(m_folder.path());
    QList<int> counts;
    setITunesLibraryOption(nullptr);
    for (const QByteArray& wrong : {QByteArray(), QByteArray("."), QByteArray("Music/..")}) {
        qputenv("HOME", wrong);
        counts.append(LibraryCalls::read().count);
    }
    qunsetenv("HOME");
    counts.append(LibraryCalls::read().count);
    qputenv("HOME", QFile::encodeName(m_folder.path()));
    counts.append(LibraryCalls::read().count);
    qputenv("HOME", home);
    if (!named.isEmpty())
        qputenv("MELODRIFT_ITUNES_LIBRARY", named);
    QDir::setCurrent(before);
    QCOMPARE(counts, QList<int>({0, 0, 0, 0, 1}));
}

QTEST_GUILESS_MAIN(TestLibraryBounds)
#include "tst_librarybounds.moc"
