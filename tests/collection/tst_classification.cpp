#include "collection/classification.h"

#include <QtTest>

#include <random>

using Groups = QVector<QVector<int>>;

namespace {
/// The rule as a sequence of plain steps over a copy of the titles; quadratic.
Groups groupStepByStep(QStringList titles, const QList<quint64>& durations)
{
    Groups groups;
    for (int i = 0; i < titles.size(); ++i) {
        if (titles[i].isEmpty())
            continue;
        const QString title = titles[i];
        const int sameTitle = titles.count(title);
        const int sameDuration = durations.count(durations[i]);
        if (sameDuration < 2 || sameTitle < 2 || durations[i] == 0)
            continue;
        groups.append(QVector<int>{i});
        int start = i;
        for (int search = 0; search < sameTitle - 1; ++search) {
            const int found = titles.indexOf(title, start + 1);
            if (found < 0)
                break;
            groups.last().append(found);
            titles[found] = QString();
            start = found;
        }
    }
    return groups;
}

struct Songs
{
    QStringList titles;
    QList<quint64> durations;
};

Songs randomSongs(std::mt19937& random)
{
    const auto below = [&random](unsigned bound) { return random() % bound; };
    const unsigned titleKinds = 1 + below(6);
    const unsigned durationKinds = 1 + below(8);
    Songs songs;
    for (unsigned left = below(24); left > 0; --left) {
        const unsigned title = below(titleKinds + 1);
        songs.titles.append(title == 0 ? QString() : QString(QChar('a' + title)));
        // Durations that agree in the lower 32 bits are not equal.
        const quint64 high = below(5) == 0 ? quint64(1) << 32 : 0;
        songs.durations.append(below(4) == 0 ? 0 : high + 1000 * below(durationKinds));
    }
    return songs;
}
} // namespace

class TestClassification : public QObject
{
    Q_OBJECT

private slots:
    void groupsTheExamples_data();
    void groupsTheExamples();
    void agreesWithThePlainStepsOnRandomSongs();
    void groupsAMillionSongsOfOneTitle();
    void ignoresEntriesBeyondTheShorterList();
    void anyEmptyTextMakesASongUndefined();
    void whatIsMissingIsNamed();
    void equalTextsAreGrouped();
    void blanksDoNotMakeASongUndefined();
};

void TestClassification::groupsTheExamples_data()
{
    QTest::addColumn<QStringList>("titles");
    QTest::addColumn<QList<quint64>>("durations");
    QTest::addColumn<Groups>("groups");
    using Durations = QList<quint64>;

    QTest::newRow("no songs") << QStringList() << Durations() << Groups();
    QTest::newRow("the equal duration may belong to another title")
        << QStringList{"Hello", "Hello", "Bye"} << Durations{120000, 150000, 120000} << Groups{{0, 1}};
    QTest::newRow("every duration occurs once")
        << QStringList{"Hello", "Hello", "Bye"} << Durations{120000, 150000, 90000} << Groups();
    QTest::newRow("a duration of 0 opens no group")
        << QStringList{"Hello", "Hello"} << Durations{0, 0} << Groups();
    QTest::newRow("a duration of 0 joins a group")
        << QStringList{"Hello", "Hello", "Bye"} << Durations{5, 0, 5} << Groups{{0, 1}};
    QTest::newRow("titles differ in case")
        << QStringList{"Hello", "hello"} << Durations{120000, 120000} << Groups();
    QTest::newRow("titles differ in blanks")
        << QStringList{"Hello", "Hello "} << Durations{120000, 120000} << Groups();
    QTest::newRow("titles are equal")
        << QStringList{"Hello", "Hello"} << Durations{120000, 120000} << Groups{{0, 1}};
    QTest::newRow("the search only moves forward")
        << QStringList{"Hello", "Hello", "Hello"} << Durations{150000, 120000, 120000} << Groups{{1, 2}};
    QTest::newRow("a group of one song: its only companion lies before it")
        << QStringList{"Hello", "Hello", "Bye"} << Durations{150000, 120000, 120000} << Groups{{1}};
    QTest::newRow("an empty title is never grouped")
        << QStringList{"", "", "Hello"} << Durations{120000, 120000, 120000} << Groups();
    QTest::newRow("an empty title's duration counts")
        << QStringList{"Hello", "Hello", ""} << Durations{1, 2, 1} << Groups{{0, 1}};
    QTest::newRow("two groups of three, in order of discovery")
        << QStringList{"B", "A", "A", "B", "A", "B"} << Durations{9, 9, 1, 2, 3, 4}
        << Groups{{0, 3, 5}, {1, 2, 4}};
    QTest::newRow("all 64 bits of a duration count")
        << QStringList{"A", "A"} << Durations{7, 7 + (quint64(1) << 32)} << Groups();
    // Their lowest bits are what a hash has of them, and where they are looked for.
    QTest::newRow("durations that a table finds at one place")
        << QStringList{"A", "A"} << Durations{7, 7 + (quint64(1) << 36)} << Groups();
}

void TestClassification::groupsTheExamples()
{
    QFETCH(QStringList, titles);
    QFETCH(QList<quint64>, durations);
    QTEST(Classification::groupDuplicates(titles, durations), "groups");
    QTEST(groupStepByStep(titles, durations), "groups");
}

void TestClassification::agreesWithThePlainStepsOnRandomSongs()
{
    std::mt19937 random(20140601);
    int grouped = 0;
    for (int round = 0; round < 20000; ++round) {
        const Songs songs = randomSongs(random);
        const Groups expected = groupStepByStep(songs.titles, songs.durations);
        QCOMPARE(Classification::groupDuplicates(songs.titles, songs.durations), expected);
        grouped += expected.isEmpty() ? 0 : 1;
    }
    QVERIFY(grouped > 5000);
}

void TestClassification::groupsAMillionSongsOfOneTitle()
{
    const int songs = 1000000;
    QStringList titles;
    QList<quint64> durations;
    titles.reserve(songs);
    durations.reserve(songs);
    for (int i = 0; i < songs; ++i) {
        titles.append(QStringLiteral("Untitled"));
        durations.append(200000);
    }
    const Groups groups = Classification::groupDuplicates(titles, durations);
    QCOMPARE(groups.size(), 1);
    QCOMPARE(groups.first().size(), songs);
}

void TestClassification::ignoresEntriesBeyondTheShorterList()
{
    QCOMPARE(Classification::groupDuplicates({"A", "A", "A"}, {4, 4}), (Groups{{0, 1}}));
    QCOMPARE(Classification::groupDuplicates({"A"}, {4, 4}), Groups());
}

void TestClassification::anyEmptyTextMakesASongUndefined()
{
    QVERIFY(!Classification::isUndefined("title", "artist", "album", "genre"));
    QVERIFY(Classification::isUndefined("", "artist", "album", "genre"));
    QVERIFY(Classification::isUndefined("title", QString(), "album", "genre"));
    QVERIFY(Classification::isUndefined("title", "artist", "", "genre"));
    QVERIFY(Classification::isUndefined("title", "artist", "album", ""));
}

void TestClassification::blanksDoNotMakeASongUndefined()
{
    QVERIFY(!Classification::isUndefined(" ", "\t", " ", " "));
}

void TestClassification::whatIsMissingIsNamed()
{
    QCOMPARE(Classification::missingFields("", "", "", ""),
             QStringList({"title", "artist", "album", "genre"}));
    QCOMPARE(Classification::missingFields("t", "", "a", " "), QStringList({"artist"}));
    QVERIFY(Classification::missingFields("t", "a", "b", "g").isEmpty());
}

void TestClassification::equalTextsAreGrouped()
{
    QCOMPARE(Classification::groupEqual({"b", "a", "", "b", "c", "", "a", "b"}), Groups({{0, 3, 7}, {1, 6}}));
    QCOMPARE(Classification::groupEqual({}), Groups());
}

QTEST_GUILESS_MAIN(TestClassification)
#include "tst_classification.moc"
