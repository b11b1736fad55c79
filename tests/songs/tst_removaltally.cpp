#include "removalfixture.h"
#include "songs/removaltally.h"

namespace {
RemovedFiles::Trashed trashed(const QString& path)
{
    return {path, {}};
}
} // namespace

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
    tally.addFiles({});
    QCOMPARE(tally.line(), QString());
    QVERIFY(!tally.failed());
}

void TestRemovalTally::filesAreCountedByWhatBecameOfThem()
{
    RemovalTally tally;
    tally.addFiles({{trashed("/a"), trashed("/b")}, {{"/c", "there is no trash on that disk"}}, {}});
    QVERIFY(!tally.failed());
    QCOMPARE(tally.line(),
             QString("2 songs moved to the trash. 1 song deleted for good: there is no trash on "
                     "that disk."));
}

void TestRemovalTally::theFirstThatStayedIsNamed()
{
    RemovalTally tally;
    tally.addFiles({{}, {}, {{"/music/a.mp3", "it is gone"}}});
    tally.addFiles({{}, {}, {{"/music/b.mp3", "another reason"}}});
    QVERIFY(tally.failed());
    QCOMPARE(tally.line(), QString("2 files could not be deleted: \"a.mp3\" (it is gone) and 1 more."));
    QCOMPARE(tally.files().failed.size(), 2);
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
    const QMusicInfo* gone = song("a");
    QMusicInfo* kept = song("b");
    SongRemoval::removeFile(*gone, nullptr, {}, *m_removal);
    SongRemoval::removeFile(*gone, nullptr, {}, *m_removal);
    SongRemoval::removeFile(*kept, nullptr, SongRemoval::filesOf({kept}), *m_removal);
    SongRemoval::removeFile(QMusicInfo(), nullptr, {}, *m_removal);
    RemovalTally tally;
    tally.addFiles(m_removal->removed());
    QVERIFY(tally.failed());
    QCOMPARE(tally.line(),
             QString("1 song moved to the trash. 2 files could not be deleted: \"a.mp3\" (%1) and 1 more.")
                 .arg(tally.files().failed.first().reason));
}

QTEST_MAIN(TestRemovalTally)
#include "tst_removaltally.moc"
