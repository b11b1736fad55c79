#include "removalfixture.h"
#include "songs/removaltally.h"

using SongRemoval::FileRemoval;

class TestRemovalTally : public RemovalFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }

    void nothingIsNothing();
    void filesAreCountedByWhatBecameOfThem();
    void theFirstThatStayedIsNamed();
    void talliesAddUp();
    void aRemovalTellsWhatBecameOfTheFile();
};

void TestRemovalTally::nothingIsNothing()
{
    RemovalTally tally;
    tally.addFile(*song("a"), {});
    QCOMPARE(tally.line(), QString());
    QVERIFY(!tally.failed());
}

void TestRemovalTally::filesAreCountedByWhatBecameOfThem()
{
    RemovalTally tally;
    tally.addFile(*song("a"), {FileRemoval::ToTrash, QString()});
    tally.addFile(*song("b"), {FileRemoval::ToTrash, QString()});
    tally.addFile(*song("c"), {FileRemoval::ForGood, "there is no trash on that disk"});
    QVERIFY(!tally.failed());
    QCOMPARE(tally.line(),
             QString("2 songs moved to the trash. 1 song deleted for good: there is no trash on "
                     "that disk."));
}

void TestRemovalTally::theFirstThatStayedIsNamed()
{
    RemovalTally tally;
    tally.addFile(*song("a"), {FileRemoval::Stays, "it is gone"});
    tally.addFile(*song("b"), {FileRemoval::Stays, "another reason"});
    QVERIFY(tally.failed());
    QCOMPARE(tally.line(), QString("2 files could not be deleted: \"a.mp3\" (it is gone) and 1 more."));
}

void TestRemovalTally::talliesAddUp()
{
    RemovalTally tally;
    tally.addTrack(*song("a"), ITUNES_EDIT_DONE);
    RemovalTally other;
    other.addTrack(*song("b"), ITUNES_EDIT_DONE);
    other.addTrack(*song("c"), ITUNES_LIBRARY_IN_USE);
    tally.add(other);
    tally.add(RemovalTally());
    QVERIFY(tally.failed());
    QCOMPARE(tally.line(),
             QString("2 tracks taken out of the library; their files stay. 1 track could not be taken out of "
                     "the library: \"c.mp3\" (another program is changing the library)."));
}

void TestRemovalTally::aRemovalTellsWhatBecameOfTheFile()
{
    QMusicInfo* gone = song("a");
    QMusicInfo* kept = song("b");
    QCOMPARE(SongRemoval::removeFile(*gone, nullptr, {}).way, FileRemoval::ForGood);
    const FileRemoval again = SongRemoval::removeFile(*gone, nullptr, {});
    QCOMPARE(again.way, FileRemoval::Stays);
    QVERIFY(!again.reason.isEmpty());
    QCOMPARE(SongRemoval::removeFile(*kept, nullptr, SongRemoval::filesOf({kept})).way, FileRemoval::Stays);
    QCOMPARE(SongRemoval::removeFile(QMusicInfo(), nullptr, {}).way, FileRemoval::Nothing);
    FileRemoval removal;
    SongRemoval::removeOne(lists(), kept, -1, {}, &removal);
    QCOMPARE(removal.way, FileRemoval::ForGood);
}

QTEST_MAIN(TestRemovalTally)
#include "tst_removaltally.moc"
