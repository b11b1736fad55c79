// Tracks that a plan has leave a library, and their files.
#include "collection/librarytracks.h"
#include "collection/trackcleaning.h"
#include "historyfixture.h"
#include "itunesfixture.h"

#include <unistd.h>

class TestTrackCleaning : public HistoryFixture
{
    Q_OBJECT

private slots:
    void init();
    void tracksLeaveAndTheirFilesGo();
    void aFileThatATrackLeftNeedsStays_data();
    void aFileThatATrackLeftNeedsStays();
    void aTrackWithoutItsFileLeaves();
    void whereNoFileIsThereAllStay();
    void whatTheLibraryCannotTellApartStays();
    void noMusicByItsNameStays();
    void nothingGoesForAKeptOneThatChanged();
    void aLibraryThatRefusesCostsNoFile();
    void aLibraryThatChangedSinceIsLeft();
    void manyLeaveInStrokes();
    void itCanBeEnded();

private:
    int add(const QString& name, bool isThere = true);
    void makeLibrary();
    CleaningPlan plan(const QVector<int>& group, const std::vector<std::string>& others = {}) const;
    /// The titles' numbers that are left.
    QList<int> left() const;
    QStringList carryOut(const CleaningPlan& plan, bool goesOn = true);

    QVector<Fixtures::ITunesTrack> m_tracks;
    std::string m_library;
    FileState m_asRead;
    QString m_refusal;
};

void TestTrackCleaning::init()
{
    prepare();
    m_tracks.clear();
    m_refusal.clear();
}

int TestTrackCleaning::add(const QString& name, bool isThere)
{
    const std::string path = isThere ? write(name, "song " + name.toUtf8()) : at(name);
    Fixtures::ITunesTrack track = Fixtures::itunesTrack(m_tracks.size(), QString::fromStdString(path));
    track.trackNumber = quint64(m_tracks.size()) + 1;
    m_tracks.append(track);
    return m_tracks.size() - 1;
}

void TestTrackCleaning::makeLibrary()
{
    m_library = write("Library.xml", Fixtures::itunesLibrary(m_tracks));
    m_asRead = FileState::of(m_library);
}

CleaningPlan TestTrackCleaning::plan(const QVector<int>& group, const std::vector<std::string>& others) const
{
    LibraryTracks tracks(m_library);
    QVector<SongCopy> copies;
    for (const int position : group)
        copies.append(LibraryTracks::copyOf(tracks.at(position).song));
    return CleaningPlan({copies}, {}, others);
}

QList<int> TestTrackCleaning::left() const
{
    LibraryTracks tracks(m_library);
    QList<int> numbers;
    for (int i = 0; i < tracks.count(); ++i)
        numbers.append(tracks.at(i).song.track - 1);
    return numbers;
}

/// The names of files that went, and "name: reason" for what did not.
QStringList TestTrackCleaning::carryOut(const CleaningPlan& plan, bool goesOn)
{
    QStringList told;
    const std::unique_ptr<ChangeStep> step = history().begin("library clean", m_reason);
    const auto tell = [&told](const CleaningPlan::Decision& decision, const TrackCleaning::Outcome& outcome) {
        const QString name = QString::fromStdString(decision.copy.path).section('/', -1);
        if (outcome.isGone)
            told.append(name);
        else if (!outcome.whyNot.isEmpty())
            told.append(name + ": " + outcome.whyNot);
    };
    m_refusal = TrackCleaning(plan, m_library, m_asRead, *step)
                    .carryOut([&step](const std::string& path,
                                      const FileState& state) { return step->moveToTrash(path, state); },
                              tell, [goesOn] { return goesOn; });
    return told;
}

void TestTrackCleaning::tracksLeaveAndTheirFilesGo()
{
    for (const char* name : {"a.mp3", "b.mp3", "c.mp3", "d.mp3"})
        add(name);
    makeLibrary();
    const QByteArray before = read(m_library);
    const CleaningPlan cleaning = plan({0, 1, 3});
    QCOMPARE(cleaning.tracksGoing(), 2);
    QCOMPARE(cleaning.going(), 2);
    QCOMPARE(left(), QList<int>({0, 1, 2, 3}));
    QCOMPARE(carryOut(cleaning), QStringList({"b.mp3", "d.mp3"}));
    QCOMPARE(m_refusal, QString());
    QCOMPARE(left(), QList<int>({0, 2}));
    QCOMPARE(failuresOf(takeBack()), QStringList());
    QVERIFY(read(m_library) == before);
    QCOMPARE(read(at("d.mp3")), QByteArray("song d.mp3"));
}

void TestTrackCleaning::aFileThatATrackLeftNeedsStays_data()
{
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("isInGroup");
    QTest::addColumn<bool>("fileGoes");
    for (const bool isInGroup : {true, false}) {
        const QString where = isInGroup ? " that is kept" : " of another song";
        QTest::newRow(qPrintable("one path" + where)) << "b.mp3" << isInGroup << false;
        QTest::newRow(qPrintable("a link" + where)) << "link.mp3" << isInGroup << false;
        QTest::newRow(qPrintable("a hard link" + where)) << "hard.mp3" << isInGroup << true;
        QTest::newRow(qPrintable("a linked folder" + where)) << "folder/b.mp3" << isInGroup << false;
    }
}

void TestTrackCleaning::aFileThatATrackLeftNeedsStays()
{
    QFETCH(QString, other);
    QFETCH(bool, isInGroup);
    QFETCH(bool, fileGoes);
    write("b.mp3", "song b");
    QCOMPARE(::symlink("b.mp3", at("link.mp3").c_str()), 0);
    QCOMPARE(::symlink(".", at("folder").c_str()), 0);
    QCOMPARE(::link(at("b.mp3").c_str(), at("hard.mp3").c_str()), 0);
    add(isInGroup ? other : QString("a.mp3"), !isInGroup);
    add("b.mp3", false);
    if (!isInGroup)
        add(other, false);
    makeLibrary();
    const CleaningPlan cleaning = isInGroup ? plan({0, 1}) : plan({0, 1}, {at(other)});
    QCOMPARE(cleaning.tracksGoing(), 1);
    QCOMPARE(carryOut(cleaning), fileGoes ? QStringList("b.mp3") : QStringList());
    QVERIFY(!left().contains(1));
    QCOMPARE(read(at(other)), QByteArray("song b"));
}

void TestTrackCleaning::aTrackWithoutItsFileLeaves()
{
    add("gone.mp3", false);
    add("b.mp3");
    add("c.mp3");
    makeLibrary();
    QCOMPARE(carryOut(plan({0, 1, 2})), QStringList("c.mp3"));
    QCOMPARE(left(), QList<int>({1}));
}

void TestTrackCleaning::whereNoFileIsThereAllStay()
{
    add("gone.mp3", false);
    add("gone too.mp3", false);
    makeLibrary();
    QCOMPARE(plan({0, 1}).tracksGoing(), 0);
}

void TestTrackCleaning::whatTheLibraryCannotTellApartStays()
{
    for (const char* name : {"a.mp3", "b.mp3", "c.mp3", "d.mp3"})
        add(name);
    m_tracks[1].persistentId = m_tracks[2].persistentId;
    makeLibrary();
    QCOMPARE(carryOut(plan({0, 1, 2, 3})), QStringList("d.mp3"));
    QCOMPARE(left(), QList<int>({0, 1, 2}));
}

void TestTrackCleaning::noMusicByItsNameStays()
{
    add("a.mp3");
    add("letter.txt");
    makeLibrary();
    QCOMPARE(carryOut(plan({0, 1})), QStringList());
    QCOMPARE(left(), QList<int>({0}));
    QVERIFY(!read(at("letter.txt")).isEmpty());
}

void TestTrackCleaning::nothingGoesForAKeptOneThatChanged()
{
    add("a.mp3");
    add("b.mp3");
    makeLibrary();
    const CleaningPlan cleaning = plan({0, 1});
    write("a.mp3", "another program's, and longer");
    QCOMPARE(carryOut(cleaning),
             QStringList("b.mp3: the copy that is kept in its place is not as it was found"));
    QCOMPARE(left(), QList<int>({0, 1}));
}

void TestTrackCleaning::aLibraryThatRefusesCostsNoFile()
{
    add("a.mp3");
    add("b.mp3");
    makeLibrary();
    const CleaningPlan cleaning = plan({0, 1});
    m_tracks.removeLast();
    makeLibrary();
    QCOMPARE(carryOut(cleaning), QStringList());
    QVERIFY(!m_refusal.isEmpty());
    QVERIFY(!read(at("b.mp3")).isEmpty());
    QCOMPARE(takeBack().step, 0);
}

void TestTrackCleaning::aLibraryThatChangedSinceIsLeft()
{
    add("a.mp3");
    add("b.mp3");
    makeLibrary();
    const CleaningPlan cleaning = plan({0, 1});
    const QByteArray others = read(m_library) + "\n";
    write("Library.xml", others);
    QCOMPARE(carryOut(cleaning), QStringList());
    QVERIFY(!m_refusal.isEmpty());
    QVERIFY(read(m_library) == others);
}

void TestTrackCleaning::manyLeaveInStrokes()
{
    QVector<int> group = {add("a.mp3")};
    for (int i = 0; i < 1001; ++i)
        group.append(add(QString("gone %1.mp3").arg(i), false));
    add("b.mp3");
    makeLibrary();
    const QByteArray before = read(m_library);
    QCOMPARE(carryOut(plan(group)), QStringList());
    QCOMPARE(left(), QList<int>({0, 1002}));
    QCOMPARE(int(steps().at(1).changes.size()), 3);
    QCOMPARE(failuresOf(takeBack()), QStringList());
    QVERIFY(read(m_library) == before);
}

void TestTrackCleaning::itCanBeEnded()
{
    add("a.mp3");
    add("b.mp3");
    makeLibrary();
    QCOMPARE(carryOut(plan({0, 1}), false), QStringList());
    QCOMPARE(left(), QList<int>({0, 1}));
}

QTEST_GUILESS_MAIN(TestTrackCleaning)
#include "tst_trackcleaning.moc"
