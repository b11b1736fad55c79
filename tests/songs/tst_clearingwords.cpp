#include "removalfixture.h"
#include "songs/clearingwords.h"

#include <QRegularExpression>

#include <filesystem>
#include <random>

/// What is said before duplicates go.
class TestClearingWords : public RemovalFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }

    void songsAndTheOneThatStaysAreNamed_data();
    void songsAndTheOneThatStaysAreNamed();
    void tracksKeepTheirFiles();
    void nothingOfTheGroupStays();
    void thereMayBeNothingToDelete();
    void aLongTitleLeavesRoomForTheRest();
    void filesThatStayAreTold();
    void aFileOfTwoSongsIsOneFile();
    void clearingAllIsCountedBefore();
    void clearingAllTakesTracksOnly();
    void clearingAllIsCountedAsItIsDone();

private:
    QMusicInfo* copy(const QString& name, const QString& format = QStringLiteral("FLAC"));
    QList<QMusicInfo*> copies(int count);
    /// The number of songs that the walk over a group's rows and the clearing of all groups take.
    int cleared(QList<QMusicInfo*>& shown, const QList<QMusicInfo*>& kept);
};

namespace {
bool everythingFits(const QString&)
{
    return true;
}
} // namespace

QMusicInfo* TestClearingWords::copy(const QString& name, const QString& format)
{
    QMusicInfo* const made = song(name);
    made->localInfo->title = QStringLiteral("Midnight Ferry");
    made->localInfo->format = format;
    return made;
}

QList<QMusicInfo*> TestClearingWords::copies(int count)
{
    QList<QMusicInfo*> made;
    for (int i = 0; i < count; ++i)
        made.append(copy(QString::number(m_all.size())));
    return made;
}

void TestClearingWords::songsAndTheOneThatStaysAreNamed_data()
{
    QTest::addColumn<int>("going");
    QTest::addColumn<int>("kept");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("files");
    QTest::newRow("two of three") << 2 << 1 << R"(Delete 2 songs, keep "Midnight Ferry" (FLAC)?)"
                                  << "2 files go.";
    QTest::newRow("one of two") << 1 << 1 << R"(Delete 1 song, keep "Midnight Ferry" (FLAC)?)"
                                << "1 file goes.";
    QTest::newRow("two stay") << 1 << 2 << R"(Delete 1 song, keep "Midnight Ferry" (FLAC) and 1 more?)"
                              << "1 file goes.";
    QTest::newRow("thousands") << 2000 << 1 << R"(Delete 2,000 songs, keep "Midnight Ferry" (FLAC)?)"
                               << "2,000 files go.";
}

void TestClearingWords::songsAndTheOneThatStaysAreNamed()
{
    QFETCH(int, going);
    QFETCH(int, kept);
    const auto question = ClearingWords::beforeGroup(copies(going), copies(kept), everythingFits);
    QTEST(question.text, "text");
    QTEST(question.files, "files");
    QVERIFY(!question.nothingStays);
}

void TestClearingWords::tracksKeepTheirFiles()
{
    const Fixtures::ModeGuard mode(false);
    std::vector<std::unique_ptr<Fixtures::Song>> tracks;
    QList<QMusicInfo*> songs;
    for (int i = 0; i < 3; ++i) {
        tracks.push_back(Fixtures::makeSong(false));
        tracks.back()->record.name = "Midnight Ferry";
        tracks.back()->record.kind = "AAC audio file";
        songs.append(&tracks.back()->info);
    }
    const auto two = ClearingWords::beforeGroup(songs.mid(1), songs.mid(0, 1), everythingFits);
    QCOMPARE(two.text, QString(R"(Delete 2 tracks, keep "Midnight Ferry" (AAC audio file)?)"));
    QCOMPARE(two.files, QString("Their files stay."));
    tracks.front()->record.kind = nullptr;
    const auto one = ClearingWords::beforeGroup(songs.mid(2), songs.mid(0, 1), everythingFits);
    QCOMPARE(one.text, QString(R"(Delete 1 track, keep "Midnight Ferry"?)"));
    QCOMPARE(one.files, QString("Its file stays."));
}

void TestClearingWords::nothingOfTheGroupStays()
{
    const auto question = ClearingWords::beforeGroup(copies(3), {}, everythingFits);
    QCOMPARE(question.text, QString("Delete 3 songs, keep none of this group?"));
    QCOMPARE(question.files, QString("3 files go."));
    QVERIFY(question.nothingStays);
}

void TestClearingWords::thereMayBeNothingToDelete()
{
    const auto question = ClearingWords::beforeGroup({}, copies(2), everythingFits);
    QCOMPARE(question.text, QString("Every song of this group is kept: there is nothing to delete."));
    QCOMPARE(question.files, QString());
    QVERIFY(!question.nothingStays);
}

void TestClearingWords::aLongTitleLeavesRoomForTheRest()
{
    const auto fits = [](const QString& text) { return text.size() <= 40; };
    const auto shortened = ClearingWords::beforeGroup(copies(2), copies(1), fits);
    QCOMPARE(shortened.text, QString(R"(Delete 2 songs, keep "Midnig..." (FLAC)?)"));
    const auto hopeless =
        ClearingWords::beforeGroup(copies(2), copies(1), [](const QString&) { return false; });
    QCOMPARE(hopeless.text, QString(R"(Delete 2 songs, keep "..." (FLAC)?)"));
    const QList<QMusicInfo*> odd = copies(1);
    odd.first()->localInfo->title = QStringLiteral("Midnight\nFerry\t2");
    QCOMPARE(ClearingWords::beforeGroup(copies(1), odd, everythingFits).text,
             QString(R"(Delete 1 song, keep "Midnight Ferry 2" (FLAC)?)"));
}

void TestClearingWords::filesThatStayAreTold()
{
    const QList<QMusicInfo*> kept = copies(1);
    const QList<QMusicInfo*> going = copies(4);
    going.at(0)->localInfo->filePath = fileOf(kept.first()); // added twice
    going.at(0)->localInfo->file = kept.first()->localInfo->file;
    Fixtures::saveBytes("written since", fileOf(going.at(1)));
    QVERIFY(QFile::remove(fileOf(going.at(2))));
    QCOMPARE(ClearingWords::beforeGroup(going, kept, everythingFits).files, QString("1 file goes, 2 stay."));
}

void TestClearingWords::aFileOfTwoSongsIsOneFile()
{
    const QList<QMusicInfo*> going = copies(2);
    going.at(1)->localInfo->filePath = fileOf(going.first());
    going.at(1)->localInfo->file = going.first()->localInfo->file;
    const auto question = ClearingWords::beforeGroup(going, copies(1), everythingFits);
    QCOMPARE(question.text, QString(R"(Delete 2 songs, keep "Midnight Ferry" (FLAC)?)"));
    QCOMPARE(question.files, QString("1 file goes."));
}

void TestClearingWords::clearingAllIsCountedBefore()
{
    group(copies(3));
    const QList<QMusicInfo*>& shown = group(copies(4))->musicList;
    group(copies(2));
    QCOMPARE(ClearingWords::beforeAll(m_groups, &shown, {shown.first()}),
             QString("Of 3 groups, 6 songs go with their files; 3 stay.\n"
                     "This group goes by its check marks; of every other one the first song stays."));
    QVERIFY(ClearingWords::beforeAll(m_groups, &shown, {shown.last()}).contains("6 songs"));
    QVERIFY(ClearingWords::beforeAll(m_groups, nullptr, {}).contains("6 songs"));
}

void TestClearingWords::clearingAllTakesTracksOnly()
{
    group(copies(3));
    const Fixtures::ModeGuard mode(false);
    QVERIFY(ClearingWords::beforeAll(m_groups, nullptr, {})
                .startsWith("Of 1 group, 2 tracks go out of the library, not their files; 1 stay"));
}

int TestClearingWords::cleared(QList<QMusicInfo*>& shown, const QList<QMusicInfo*>& kept)
{
    const int before = m_all.size();
    const int current = m_groups.indexOf(m_ownGroups.front().get());
    for (int position = shown.size() - 1; position >= 0; --position) {
        QMusicInfo* const next = shown.value(position);
        if (next && !kept.contains(next))
            SongRemoval::removeOne(lists(), next, current, KeptFiles(), *m_removal);
    }
    SongRemoval::removeAll(lists(), SongRemoval::planOfAll(m_groups));
    return before - m_all.size();
}

/// Whatever is marked: the oddities of clearing change what goes, and the number with it.
void TestClearingWords::clearingAllIsCountedAsItIsDone()
{
    std::mt19937 random(5);
    for (int round = 0; round < 60; ++round) {
        prepare();
        DupMusicInfo* const shown = group(copies(1 + int(random() % 5)));
        for (int others = int(random() % 3); others > 0; --others)
            group(copies(1 + int(random() % 4)));
        std::shuffle(m_groups.begin(), m_groups.end(), random);
        QList<QMusicInfo*> kept;
        for (QMusicInfo* one : qAsConst(shown->musicList))
            if (random() % 2)
                kept.append(one);
        const QString words = ClearingWords::beforeAll(m_groups, &shown->musicList, kept);
        const int said = QRegularExpression(", (\\d+) song").match(words).captured(1).toInt();
        QVERIFY2(said == cleared(shown->musicList, kept), qPrintable(words));
    }
}

QTEST_MAIN(TestClearingWords)
#include "tst_clearingwords.moc"
