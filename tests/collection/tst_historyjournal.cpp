#include "collection/historyjournal.h"
#include "collection/historysteps.h"
#include "filebytes.h"
#include "support/interposed.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <sys/stat.h>

using base::Failure;
using Safety = HistoryJournal::Safety;

namespace {
constexpr std::chrono::milliseconds noTime(0);
constexpr std::int64_t noEnd = std::int64_t(1) << 40;

std::string stepLine(int step)
{
    return HistorySteps::beginLine(step, 1700000000 + step, "clean");
}
} // namespace

class TestHistoryJournal : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void whatIsAddedIsRead();
    void noJournalHasNoLines();
    void itIsItsUsersAlone();
    void aLineCutShortIsNone();
    void whatIsNoJournalStays_data();
    void whatIsNoJournalStays();
    void aFolderThatCannotBeMadeIsTold();
    void oneRunAtATime();
    void anotherRunIsWaitedFor();
    void aFullDiskTakesNoHalfLine();
    void theLastStepIsFoundAtTheEnd();
    void oldStepsMakeRoom();
    void theNewestStepStaysHoweverLargeItIs();
    void aDiskThatTakesNoShorterOneKeepsTheOld();

private:
    std::string folder() const { return QFile::encodeName(m_folder->filePath("state/of/it")).toStdString(); }
    QString path() const { return m_folder->filePath("state/of/it/journal"); }
    std::unique_ptr<HistoryJournal> open(std::int64_t mostBytes = noEnd,
                                         std::chrono::milliseconds patience = noTime);
    QStringList lines();
    /// Of all lines, as long as they stand one after the other.
    QVector<int> steps();
    void add(HistoryJournal& journal, const std::string& lines, Safety safety = Safety::Kill);

    std::unique_ptr<QTemporaryDir> m_folder;
    Failure m_failure;
};

void TestHistoryJournal::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_failure = Failure();
}

std::unique_ptr<HistoryJournal> TestHistoryJournal::open(std::int64_t mostBytes,
                                                         std::chrono::milliseconds patience)
{
    return HistoryJournal::open(folder(), mostBytes, patience, m_failure);
}

QStringList TestHistoryJournal::lines()
{
    QStringList lines;
    const bool read = HistoryJournal::read(
        folder(),
        [&lines](std::string_view line) { lines.append(QString::fromStdString(std::string(line))); },
        m_failure);
    return read ? lines : QStringList{"unreadable"};
}

QVector<int> TestHistoryJournal::steps()
{
    QVector<int> steps;
    for (const QString& line : lines())
        steps.append(HistorySteps::stepOf(line.toStdString()).value_or(-1));
    return steps;
}

void TestHistoryJournal::add(HistoryJournal& journal, const std::string& lines, Safety safety)
{
    QVERIFY2(journal.append(lines, safety, m_failure), m_failure.text.c_str());
}

void TestHistoryJournal::whatIsAddedIsRead()
{
    {
        const auto journal = open();
        QVERIFY2(journal, m_failure.text.c_str());
        QCOMPARE(journal->lastStep(), 0);
        add(*journal, "one\ntwo\n");
        add(*journal, "three\n", Safety::PowerCut);
        QCOMPARE(lines(), (QStringList{"one", "two", "three"})); // by another run meanwhile
    }
    add(*open(), "four\n");
    QCOMPARE(lines(), (QStringList{"one", "two", "three", "four"}));
    const std::string large(700000, 'x'); // larger than what is read at once
    add(*open(), large + "\nfive\n");
    QCOMPARE(lines().mid(4), (QStringList{QString::fromStdString(large), "five"}));
}

void TestHistoryJournal::noJournalHasNoLines()
{
    QCOMPARE(lines(), QStringList());
    QVERIFY(!QFileInfo::exists(m_folder->filePath("state")));
    open();
    QCOMPARE(lines(), QStringList());
}

void TestHistoryJournal::itIsItsUsersAlone()
{
    open();
    struct stat found = {};
    QCOMPARE(::stat(folder().c_str(), &found), 0);
    QCOMPARE(int(found.st_mode & 0777), 0700);
    QCOMPARE(::stat(QFile::encodeName(path()).constData(), &found), 0);
    QCOMPARE(int(found.st_mode & 0777), 0600);
}

/// Wherever a kill or a power cut comes.
void TestHistoryJournal::aLineCutShortIsNone()
{
    add(*open(), stepLine(1) + stepLine(2));
    const QByteArray whole = Fixtures::readBytes(path());
    const int begin = whole.indexOf('\n') + 1;
    const int second = whole.indexOf('\n', begin) + 1;
    for (int size = begin; size <= whole.size(); ++size) {
        Fixtures::saveBytes(whole.left(size), path());
        const QVector<int> before = size < second         ? QVector<int>()
                                    : size < whole.size() ? QVector<int>{1}
                                                          : QVector<int>{1, 2};
        QCOMPARE(steps(), before);
        const auto journal = open();
        QCOMPARE(journal->lastStep(), before.size());
        add(*journal, stepLine(7));
        QCOMPARE(steps(), before + QVector<int>{7});
    }
}

void TestHistoryJournal::whatIsNoJournalStays_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("another file") << QByteArray("somebody's notes, without an end");
    QTest::newRow("a later one") << QByteArray("melodrift changes 2\nline\n");
    QTest::newRow("cut short") << QByteArray("melodrift changes");
}

void TestHistoryJournal::whatIsNoJournalStays()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(QDir().mkpath(m_folder->filePath("state/of/it")));
    Fixtures::saveBytes(bytes, path());
    QVERIFY(!open());
    QVERIFY(!m_failure.text.empty());
    QCOMPARE(lines(), QStringList{"unreadable"});
    QCOMPARE(Fixtures::readBytes(path()), bytes);
}

void TestHistoryJournal::aFolderThatCannotBeMadeIsTold()
{
    Fixtures::saveBytes("no folder", m_folder->filePath("state"));
    QVERIFY(!open());
    QVERIFY2(m_failure.text.find("cannot be made") != std::string::npos, m_failure.text.c_str());
}

void TestHistoryJournal::oneRunAtATime()
{
    auto first = open();
    QVERIFY(!open());
    QCOMPARE(m_failure.kind, Failure::Kind::InUse);
    first.reset();
    QVERIFY(open());
}

void TestHistoryJournal::anotherRunIsWaitedFor()
{
    const Interposed::Guard guard;
    auto first = open();
    add(*first, stepLine(1));
    int asked = 0;
    Interposed::beforeLock = [&] {
        if (++asked == 3)
            first.reset();
    };
    const auto second = open(noEnd, std::chrono::hours(1));
    QVERIFY(second);
    QCOMPARE(second->lastStep(), 1);
}

void TestHistoryJournal::aFullDiskTakesNoHalfLine()
{
    const Interposed::Guard guard;
    const auto journal = open();
    add(*journal, stepLine(1));
    const QByteArray before = Fixtures::readBytes(path());
    Interposed::writeFails = [] { return true; };
    QVERIFY(!journal->append(stepLine(2), Safety::Kill, m_failure));
    QCOMPARE(m_failure.kind, Failure::Kind::DiskFull);
    QCOMPARE(Fixtures::readBytes(path()), before);
    Interposed::writeFails = nullptr;
    add(*journal, stepLine(2));
    QCOMPARE(steps(), (QVector<int>{1, 2}));
}

void TestHistoryJournal::theLastStepIsFoundAtTheEnd()
{
    const auto journal = open();
    add(*journal, stepLine(41) + HistorySteps::endLine(41) + stepLine(42) + HistorySteps::endLine(42));
    QCOMPARE(journal->lastStep(), 42);
    add(*journal, HistorySteps::triedLine(41));
    QCOMPARE(journal->lastStep(), 42);
    add(*journal, std::string(3000000, 'x') + '\n');
    QCOMPARE(journal->lastStep(), 42);
    std::string old; // an earlier step is taken back, which has many files
    for (int number = 1; number < 20000; ++number)
        old += HistorySteps::backLine(41, number, {});
    add(*journal, old);
    QCOMPARE(journal->lastStep(), 42);
    add(*journal, stepLine(43).substr(2)); // damaged
    QCOMPARE(journal->lastStep(), 42);
}

void TestHistoryJournal::oldStepsMakeRoom()
{
    std::string all;
    for (int step = 1; step <= 100; ++step)
        all += stepLine(step) + HistorySteps::endLine(step);
    const std::string last = HistorySteps::triedLine(3) + HistorySteps::triedLine(90);
    add(*open(), all + last);
    const std::int64_t size = QFileInfo(path()).size();
    QCOMPARE(open(size)->lastStep(), 100);
    QCOMPARE(steps().size(), 202);
    QCOMPARE(open(size - 1)->lastStep(), 100);
    const QVector<int> left = steps();
    QVERIFY(left.first() > 45 && left.first() < 55);
    QCOMPARE(left.last(), 90);
    QCOMPARE(left.size(), 2 * (101 - left.first()) + 1);
    QVERIFY(QFileInfo(path()).size() <= size / 2);
    add(*open(), stepLine(101));
    QCOMPARE(steps().last(), 101);
}

void TestHistoryJournal::theNewestStepStaysHoweverLargeItIs()
{
    add(*open(), stepLine(1) + stepLine(2) + HistorySteps::endLine(2));
    QCOMPARE(open(1)->lastStep(), 2);
    QCOMPARE(steps(), (QVector<int>{2, 2}));
}

void TestHistoryJournal::aDiskThatTakesNoShorterOneKeepsTheOld()
{
    const Interposed::Guard guard;
    add(*open(), stepLine(1) + stepLine(2));
    Interposed::writeFails = [] { return true; };
    QVERIFY(open(1));
    Interposed::writeFails = nullptr;
    QCOMPARE(steps(), (QVector<int>{1, 2}));
    QCOMPARE(QDir(m_folder->filePath("state/of/it")).entryList(QDir::Files | QDir::Hidden).size(), 2);
}

QTEST_APPLESS_MAIN(TestHistoryJournal)
#include "tst_historyjournal.moc"
