#include "historyfixture.h"

#include <unistd.h>

/// What later runs take back, and what they leave alone.
class TestHistory : public HistoryFixture
{
    Q_OBJECT

private slots:
    void init() { prepare(); }

    void filesComeBackFromTheTrash();
    void whatCannotComeBackIsTold();
    void aFileThatIsNotTheOneListedStays();
    void namesAreAnyBytes();
    void whereThereIsNoTrashFilesStay();
    void whatIsDeletedForGoodIsWrittenDown();
    void anEditIsTakenBack();
    void whatAFileHoldsAlreadyIsNoChange();
    void coversComeBack_data();
    void coversComeBack();
    void anEditThatFailsIsNoChange();
    void whatOthersChangedStays_data();
    void whatOthersChangedStays();
    void editsOfOneFileAreTakenBackOneAfterTheOther();
    void editsOfOneStepAreTakenBackFromTheLastOne();
    void aStepIsNamed();
    void aStepThatWasTriedIsNotTheNextOne();
    void takingBackGoesOnWhereItWasEnded();
    void everyStepIsTold();
    void noStepIsMadeWithoutAChange();
};

void TestHistory::filesComeBackFromTheTrash()
{
    const std::string a = write("a", "music a");
    const std::string b = write("b", "music b");
    QCOMPARE(trash({a, b}), QStringList());
    QCOMPARE(m_bin.files().size(), 2);
    QVERIFY(!FileState::of(a).exists());
    const StepReturn::Result result = takeBack();
    QCOMPARE(result.step, 1);
    QCOMPARE(result.paths, (std::vector<std::string>{b, a}));
    QVERIFY(result.failed.empty() && result.isWhole);
    QCOMPARE(read(a), QByteArray("music a"));
    QCOMPARE(read(b), QByteArray("music b"));
    QCOMPARE(m_bin.files().size() + m_bin.notes().size(), 0);
    QCOMPARE(takeBack().reason, QString("there is nothing to take back"));
    QCOMPARE(takeBack(1).reason, QString("step 1 was taken back already"));
}

void TestHistory::whatCannotComeBackIsTold()
{
    const std::string a = write("a", "music a");
    const std::string b = write("b", "music b");
    const std::string c = write("c", "music c");
    QCOMPARE(trash({a, b, c}), QStringList());
    write("a", "another");
    QVERIFY(QFile::remove(m_bin.path("b")));
    const StepReturn::Result result = takeBack();
    QCOMPARE(failuresOf(result),
             (QStringList{"b: it is not in the trash any more", "a: there is a file at its path"}));
    QCOMPARE(result.paths, std::vector<std::string>{c});
    QCOMPARE(read(a), QByteArray("another"));
    QCOMPARE(Fixtures::readBytes(m_bin.path("a")), QByteArray("music a"));
    QCOMPARE(::unlink(a.c_str()), 0);
    QCOMPARE(takeBack(1).paths, std::vector<std::string>{a}); // once there is room
    QCOMPARE(read(a), QByteArray("music a"));
}

void TestHistory::aFileThatIsNotTheOneListedStays()
{
    const std::string a = write("a", "music a");
    const FileState listed = FileState::ofEntry(a);
    write("a", "changed meanwhile");
    const std::unique_ptr<ChangeStep> step = history().begin("clean", m_reason);
    QCOMPARE(step->moveToTrash(a, listed), QString("it is not the file that was listed any more"));
    QCOMPARE(step->moveToTrash(at("gone"), FileState::ofEntry(at("gone"))),
             QString("No such file or directory"));
    QVERIFY(step->isEmpty());
    QCOMPARE(read(a), QByteArray("changed meanwhile"));
}

void TestHistory::namesAreAnyBytes()
{
    const std::string path = at("song ") + "\xff %41\n=.mp3";
    const std::string first = write("first", "music");
    QCOMPARE(::rename(first.c_str(), path.c_str()), 0);
    QCOMPARE(trash({path}), QStringList());
    QVERIFY(!FileState::of(path).exists());
    QCOMPARE(takeBack().paths, std::vector<std::string>{path});
    QCOMPARE(::unlink(path.c_str()), 0);
}

void TestHistory::whereThereIsNoTrashFilesStay()
{
    const std::string a = write("a", "music a");
    m_bin.spoil();
    QCOMPARE(trash({a}).size(), 1);
    QCOMPARE(read(a), QByteArray("music a"));
    QCOMPARE(steps().size(), std::size_t(0));
}

void TestHistory::whatIsDeletedForGoodIsWrittenDown()
{
    const std::string a = write("a", "music a");
    {
        const std::unique_ptr<ChangeStep> step = history().begin("clean --delete", m_reason);
        QCOMPARE(step->deleteForGood(a, FileState()), QString("it is not the file that was listed any more"));
        QCOMPARE(step->deleteForGood(a, FileState::ofEntry(a)), QString());
    }
    QVERIFY(!FileState::of(a).exists());
    QCOMPARE(m_bin.files(), QStringList());
    QCOMPARE(steps().at(1).changes.at(1).path, a);
    QCOMPARE(steps().at(1).changes.at(1).before.size, std::int64_t(7));
    QCOMPARE(failuresOf(takeBack()), QStringList{"a: it was deleted for good"});
}

void TestHistory::anEditIsTakenBack()
{
    const std::string a = write("a", "artist=Somebody\ntitle=Old\n");
    const QByteArray before = read(a);
    TagTexts change = title(QStringLiteral("New  =%ü\nline"));
    change.texts.insert("artist", QString());
    change.texts.insert("genre", "Pop");
    change.texts.remove("title");
    change.texts.insert("title", QStringLiteral("New  =%ü"));
    QCOMPARE(edit(a, change), QString());
    QVERIFY(read(a) != before);
    QCOMPARE(titleOf(a), QStringLiteral("New  =%ü"));
    const StepReturn::Result result = takeBack();
    QCOMPARE(failuresOf(result), QStringList());
    QCOMPARE(result.paths, std::vector<std::string>{a});
    QCOMPARE(read(a), before);
}

void TestHistory::whatAFileHoldsAlreadyIsNoChange()
{
    const std::string a = song("a", "Title", "picture");
    TagTexts change = title("Title");
    change.picture = "picture";
    change.texts.insert("artist", QString());
    const FileState before = FileState::of(a);
    QCOMPARE(edit(a, change), QString());
    QCOMPARE(FileState::of(a), before);
    QCOMPARE(steps().size(), std::size_t(0));
}

void TestHistory::coversComeBack_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("another one") << QByteArray("old picture") << QByteArray("new picture");
    QTest::newRow("none") << QByteArray("old picture") << QByteArray();
    QTest::newRow("the first one") << QByteArray() << QByteArray("new picture");
}

void TestHistory::coversComeBack()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const std::string a = song("a", "Title", before);
    const QByteArray bytes = read(a);
    QCOMPARE(edit(a, picture(after)), QString());
    QVERIFY(read(a) != bytes);
    QCOMPARE(failuresOf(takeBack()), QStringList());
    QCOMPARE(read(a), bytes);
}

void TestHistory::anEditThatFailsIsNoChange()
{
    struct Refusing final : PlainTags
    {
        QString write(const std::string&, const TagTexts&) override { return "the disk is full"; }
    } tags;
    const std::string a = song("a", "Title");
    {
        const std::unique_ptr<ChangeStep> step = history().begin("tag", m_reason);
        ChangeStep::Edited edited = ChangeStep::Edited::Yes;
        QCOMPARE(step->edit(a, title("New"), tags, edited), QString("the disk is full"));
        QCOMPARE(edited, ChangeStep::Edited::No);
        QCOMPARE(step->edit(at("gone"), title("New"), tags, edited), QString("the file is gone"));
    }
    QCOMPARE(steps().size(), std::size_t(0));
    QCOMPARE(takeBack().reason, QString("there is nothing to take back"));
}

void TestHistory::whatOthersChangedStays_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("reason");
    QTest::newRow("written") << "written"
                             << "the file is written: another program changed the file since";
    QTest::newRow("removed") << "removed"
                             << "the file is removed: the file is gone";
}

void TestHistory::whatOthersChangedStays()
{
    QFETCH(QString, what);
    const std::string a = song("a", "Old");
    const std::string b = song("b", "Old");
    {
        const std::unique_ptr<ChangeStep> step = history().begin("tag", m_reason);
        ChangeStep::Edited edited = ChangeStep::Edited::No;
        QCOMPARE(step->edit(a, title("New"), m_tags, edited), QString());
        QCOMPARE(step->edit(b, title("New"), m_tags, edited), QString());
    }
    if (what == "written")
        song("a", "Another program's");
    else
        QCOMPARE(::unlink(a.c_str()), 0);
    const StepReturn::Result result = takeBack();
    QCOMPARE(result.paths, std::vector<std::string>{b});
    QCOMPARE(failuresOf(result), QStringList{what == "written" ? "a: another program changed the file since"
                                                               : "a: the file is gone"});
    QCOMPARE(titleOf(a), what == "written" ? QString("Another program's") : QString());
    QCOMPARE(titleOf(b), QString("Old"));
}

void TestHistory::editsOfOneFileAreTakenBackOneAfterTheOther()
{
    const std::string a = song("a", "One");
    for (const char* text : {"Two", "Three", "Four"})
        QCOMPARE(edit(a, title(text)), QString());
    QCOMPARE(trash({a}), QStringList());
    QCOMPARE(takeBack().step, 4);
    for (const char* text : {"Three", "Two", "One"}) {
        QCOMPARE(failuresOf(takeBack()), QStringList());
        QCOMPARE(titleOf(a), QString(text));
    }
    QCOMPARE(takeBack().step, 0);
}

void TestHistory::editsOfOneStepAreTakenBackFromTheLastOne()
{
    const std::string a = song("a", "One");
    {
        const std::unique_ptr<ChangeStep> step = history().begin("tag", m_reason);
        ChangeStep::Edited edited = ChangeStep::Edited::No;
        QCOMPARE(step->edit(a, title("Two"), m_tags, edited), QString());
        QCOMPARE(step->edit(a, title("Three"), m_tags, edited), QString());
        QCOMPARE(step->moveToTrash(a, FileState::ofEntry(a)), QString());
    }
    const StepReturn::Result result = takeBack();
    QCOMPARE(failuresOf(result), QStringList());
    QCOMPARE(result.paths.size(), std::size_t(3));
    QCOMPARE(titleOf(a), QString("One"));
}

void TestHistory::aStepIsNamed()
{
    const std::string a = song("a", "Old");
    const std::string b = song("b", "Old");
    QCOMPARE(edit(a, title("New")), QString());
    QCOMPARE(edit(b, title("New")), QString());
    QCOMPARE(takeBack(3).reason, QString("there is no step 3"));
    QCOMPARE(takeBack(1).paths, std::vector<std::string>{a});
    QCOMPARE(titleOf(b), QString("New"));
    QCOMPARE(takeBack().paths, std::vector<std::string>{b});
}

void TestHistory::aStepThatWasTriedIsNotTheNextOne()
{
    const std::string a = song("a", "Old");
    const std::string b = song("b", "Old");
    QCOMPARE(edit(a, title("New")), QString());
    QCOMPARE(edit(b, title("New")), QString());
    song("b", "Another program's");
    QCOMPARE(takeBack().failed.size(), std::size_t(1));
    QCOMPARE(takeBack().paths, std::vector<std::string>{a});
    QCOMPARE(takeBack().step, 0);
    song("b", "Old");
    QCOMPARE(takeBack(2).paths, std::vector<std::string>{b}); // which it is already
}

void TestHistory::takingBackGoesOnWhereItWasEnded()
{
    const std::string a = write("a", "music a");
    const std::string b = write("b", "music b");
    QCOMPARE(trash({a, b}), QStringList());
    QVector<QPair<int, int>> told;
    const StepReturn::Result first = history().takeBack({}, m_tags, [&told](int done, int total) {
        told.append({done, total});
        return done < 1;
    });
    QCOMPARE(told, (QVector<QPair<int, int>>{{0, 2}, {1, 2}}));
    QCOMPARE(first.paths, std::vector<std::string>{b});
    QVERIFY(!first.isWhole);
    QCOMPARE(steps().at(1).changesLeft(), 1);
    QCOMPARE(takeBack().paths, std::vector<std::string>{a});
}

void TestHistory::everyStepIsTold()
{
    const std::string a = song("a", "Old");
    const std::string b = write("b", "music b");
    QCOMPARE(edit(a, title("New")), QString());
    QCOMPARE(trash({b}), QStringList());
    const std::map<int, HistoryStep> all = steps();
    QCOMPARE(m_reason, QString());
    QCOMPARE(all.size(), std::size_t(2));
    QCOMPARE(all.at(1).what, std::string("tag"));
    QCOMPARE(all.at(2).what, std::string("clean"));
    QVERIFY(all.at(2).time > 1000000000 && all.at(2).isEnded && !all.at(2).wasTried);
    const FileChange& edited = all.at(1).changes.at(1);
    QCOMPARE(edited.kind, FileChange::Kind::Edited);
    QCOMPARE(edited.fields.size(), 1);
    QCOMPARE(edited.fields.at(0).name + edited.fields.at(0).old + edited.fields.at(0).now,
             QString("titleOldNew"));
    QCOMPARE(all.at(2).changes.at(1).kind, FileChange::Kind::Trashed);
    QCOMPARE(all.at(2).changes.at(1).path, b);
}

void TestHistory::noStepIsMadeWithoutAChange()
{
    QCOMPARE(steps().size(), std::size_t(0));
    QVERIFY(!QFileInfo::exists(journalPath()));
    history().begin("nothing", m_reason);
    const std::string a = song("a", "Old");
    QCOMPARE(edit(a, title("New")), QString());
    QCOMPARE(steps().size(), std::size_t(1));
    QCOMPARE(takeBack().step, 1);
}

QTEST_GUILESS_MAIN(TestHistory)
#include "tst_history.moc"
