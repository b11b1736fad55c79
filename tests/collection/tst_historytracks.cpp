// Tracks that a step of a history took out of a library.
#include "historyfixture.h"
#include "itunesfixture.h"

class TestHistoryTracks : public HistoryFixture
{
    Q_OBJECT

private slots:
    void init();
    void tracksAndFilesComeBack();
    void stepsComeBackTheLastOneFirst();
    void aLibraryThatChangedSinceStays();
    void aRefusedStepIsNone();
    void whatIsNotKeptDoesNotComeBack();
    void whatCannotBeWrittenDownIsNotDone();
    void aStepThatWasKilledComesBack();

private:
    static std::uint64_t id(int song) { return Fixtures::itunesTrack(song).persistentId; }
    std::string media(int song) const { return at(QString("%1.mp3").arg(song)); }
    QByteArray library() const { return read(m_library); }
    QString takeOut(const std::vector<int>& songs) const;

    std::string m_library;
    QByteArray m_before;
};

void TestHistoryTracks::init()
{
    prepare();
    m_limits = History::Limits();
    QVector<Fixtures::ITunesTrack> tracks;
    Fixtures::ITunesPlaylist all{"All", {}};
    for (int i = 0; i < 8; ++i) {
        write(QString("%1.mp3").arg(i), "song " + QByteArray::number(i));
        tracks.append(Fixtures::itunesTrack(i, QString::fromStdString(media(i))));
        all.trackIds.append(tracks.last().trackId);
    }
    m_library = write("Library.xml", Fixtures::itunesLibrary(tracks, {all}));
    m_before = library();
}

/// A step that takes these tracks out and moves their files into the trash; the reason why not.
QString TestHistoryTracks::takeOut(const std::vector<int>& songs) const
{
    QString reason;
    const std::unique_ptr<ChangeStep> step = history().begin("library clean", reason);
    if (!step)
        return reason;
    std::vector<std::uint64_t> ids;
    for (const int song : songs)
        ids.push_back(id(song));
    reason = step->takeOut(m_library, ids);
    for (std::size_t i = 0; i < songs.size() && reason.isEmpty(); ++i)
        reason = step->moveToTrash(media(songs[i]), FileState::ofEntry(media(songs[i])));
    return reason;
}

void TestHistoryTracks::tracksAndFilesComeBack()
{
    QCOMPARE(takeOut({2, 5, 7}), QString());
    QVERIFY(library().size() < m_before.size());
    QCOMPARE(m_bin.files().size(), 3);
    const FileChange change = steps().at(1).changes.at(1);
    QCOMPARE(change.kind, FileChange::Kind::TakenOut);
    QCOMPARE(change.path, m_library);
    QCOMPARE(change.tracks, 3);

    const StepReturn::Result result = takeBack();
    QCOMPARE(failuresOf(result), QStringList());
    QCOMPARE(int(result.paths.size()), 4);
    QVERIFY(library() == m_before);
    QCOMPARE(read(media(5)), QByteArray("song 5"));
    QCOMPARE(m_bin.files(), QStringList());
    QCOMPARE(takeBack().step, 0);
}

void TestHistoryTracks::stepsComeBackTheLastOneFirst()
{
    QCOMPARE(takeOut({1}), QString());
    QCOMPARE(takeOut({4, 0}), QString());
    QCOMPARE(failuresOf(takeBack(1)), QStringList("Library.xml: another program changed it since"));
    QCOMPARE(read(media(1)), QByteArray("song 1"));
    QCOMPARE(failuresOf(takeBack(2)), QStringList());
    QCOMPARE(failuresOf(takeBack(1)), QStringList());
    QVERIFY(library() == m_before);
}

void TestHistoryTracks::aLibraryThatChangedSinceStays()
{
    QCOMPARE(takeOut({1, 2}), QString());
    const QByteArray others = library().replace("<string>All</string>", "<string>Any</string>");
    write("Library.xml", others);
    QCOMPARE(failuresOf(takeBack()), QStringList("Library.xml: another program changed it since"));
    QVERIFY(library() == others);
    QCOMPARE(read(media(2)), QByteArray("song 2"));
}

void TestHistoryTracks::aRefusedStepIsNone()
{
    QVERIFY(!takeOut({1, 17}).isEmpty());
    QVERIFY(library() == m_before);
    QVERIFY(steps().empty());
    QCOMPARE(takeBack().step, 0);
}

void TestHistoryTracks::whatIsNotKeptDoesNotComeBack()
{
    QCOMPARE(takeOut({3}), QString());
    const QByteArray after = library();
    QVERIFY(QDir(m_folder->filePath("state/melodrift/covers")).removeRecursively());
    QCOMPARE(failuresOf(takeBack()),
             QStringList("Library.xml: what was taken out of it is not kept any more"));
    QVERIFY(library() == after);
}

void TestHistoryTracks::whatCannotBeWrittenDownIsNotDone()
{
    m_limits.coverBytes = 100;
    QVERIFY(takeOut({3}).startsWith("it could not be taken back: "));
    QVERIFY(library() == m_before);
    QVERIFY(steps().empty());
    QVERIFY(m_bin.files().isEmpty());
}

/// The line was written, and nothing else came of it.
void TestHistoryTracks::aStepThatWasKilledComesBack()
{
    QCOMPARE(takeOut({2, 6}), QString());
    QCOMPARE(failuresOf(takeBack()), QStringList());
    QByteArray journal = Fixtures::readBytes(journalPath());
    const int first = journal.lastIndexOf('\n', journal.indexOf("trashed "));
    QVERIFY(first > 0);
    Fixtures::saveBytes(journal.left(first + 1), journalPath());
    QVERIFY(library() == m_before);
    QVERIFY(!steps().at(1).isEnded);
    QCOMPARE(failuresOf(takeBack()), QStringList());
    QVERIFY(library() == m_before);
}

QTEST_GUILESS_MAIN(TestHistoryTracks)
#include "tst_historytracks.moc"
