#include "historyfixture.h"
#include "support/interposed.h"

#include <unistd.h>

/// Nothing is changed that could not be taken back, and nothing is taken back that nobody is sure of.
class TestHistoryFailures : public HistoryFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        m_limits = History::Limits();
        m_limits.patience = std::chrono::milliseconds(0);
        prepare();
    }

    void whatCannotBeWrittenDownIsNotChanged_data();
    void whatCannotBeWrittenDownIsNotChanged();
    void withoutAPlaceForItNothingIsChanged();
    void twoRunsDoNotChangeFilesAtOnce();
    void aHistoryThatIsNoneIsTold();
    void aCoverThatCannotBeKeptStays_data();
    void aCoverThatCannotBeKeptStays();
    void aCoverThatIsNotKeptAnyMoreIsTold();
    void whatNobodySawThroughIsToldByTheFile_data();
    void whatNobodySawThroughIsToldByTheFile();
    void aMoveThatNobodySawThroughIsTakenBack();
    void whatIsBackAlreadyIsTakenBack();
    void aFullDiskKeepsNoFileInTheTrash();
    void anEditThatIsDoneInPartIsTakenBack();
    void aFileThatIsBeingWrittenStays();

private:
    void dropLines(const QByteArray& what);
};

/// As if the run had been killed before it wrote them.
void TestHistoryFailures::dropLines(const QByteArray& what)
{
    QByteArray left;
    for (const QByteArray& line : Fixtures::readBytes(journalPath()).split('\n'))
        if (!line.isEmpty() && line.split(' ').value(1) != what)
            left += line + '\n';
    Fixtures::saveBytes(left, journalPath());
}

void TestHistoryFailures::whatCannotBeWrittenDownIsNotChanged_data()
{
    QTest::addColumn<bool>("isFirst");
    QTest::newRow("the first change") << true;
    QTest::newRow("a later one") << false;
}

void TestHistoryFailures::whatCannotBeWrittenDownIsNotChanged()
{
    QFETCH(bool, isFirst);
    const Interposed::Guard guard;
    const std::string a = song("a", "Old");
    const std::string b = song("b", "Old");
    const std::string c = song("c", "Old");
    {
        const std::unique_ptr<ChangeStep> step = history().begin("tag", m_reason);
        ChangeStep::Edited edited = ChangeStep::Edited::No;
        if (!isFirst)
            QCOMPARE(step->edit(c, title("New"), m_tags, edited), QString());
        Interposed::writeFails = [] { return true; };
        for (const QString& reason :
             {step->edit(a, title("New"), m_tags, edited), step->moveToTrash(b, FileState::ofEntry(b))}) {
            QVERIFY2(reason.startsWith("it could not be taken back: "), qPrintable(reason));
            QVERIFY2(reason.endsWith("No space left on device"), qPrintable(reason));
        }
    }
    Interposed::writeFails = nullptr;
    QCOMPARE(titleOf(a), QString("Old"));
    QCOMPARE(titleOf(b), QString("Old"));
    QCOMPARE(m_bin.files().size() + m_bin.notes().size(), 0);
    QCOMPARE(steps().size(), std::size_t(isFirst ? 0 : 1));
    QCOMPARE(takeBack().paths.size(), std::size_t(isFirst ? 0 : 1));
    QCOMPARE(titleOf(c), QString("Old"));
}

void TestHistoryFailures::withoutAPlaceForItNothingIsChanged()
{
    const std::string a = song("a", "Old");
    Fixtures::saveBytes("no folder", m_folder->filePath("state"));
    const QString reason = edit(a, title("New"));
    QVERIFY2(reason.startsWith("the history cannot be written: "), qPrintable(reason));
    QCOMPARE(trash({a}), QStringList{reason});
    QVERIFY(!History(std::string(), m_limits).begin("tag", m_reason));
    QCOMPARE(m_reason, QString("the history cannot be written: there is no folder for it"));
    QCOMPARE(titleOf(a), QString("Old"));
}

void TestHistoryFailures::twoRunsDoNotChangeFilesAtOnce()
{
    const std::string a = song("a", "Old");
    QCOMPARE(edit(a, title("New")), QString());
    {
        const std::unique_ptr<ChangeStep> step = history().begin("tag", m_reason);
        QCOMPARE(edit(a, title("Newer")), QString("another run is changing files"));
        QCOMPARE(takeBack().reason, QString("another run is changing files"));
        QCOMPARE(steps().size(), std::size_t(1)); // can be looked at
    }
    QCOMPARE(titleOf(a), QString("New"));
    QCOMPARE(takeBack().paths.size(), std::size_t(1));
}

void TestHistoryFailures::aHistoryThatIsNoneIsTold()
{
    const std::string a = song("a", "Old");
    QVERIFY(QDir().mkpath(QFile::decodeName(stateFolder().c_str())));
    Fixtures::saveBytes("notes", journalPath());
    QVERIFY(edit(a, title("New")).contains("is no history"));
    QVERIFY(steps().empty());
    QVERIFY2(m_reason.startsWith("the history cannot be read: "), qPrintable(m_reason));
    QVERIFY(takeBack().reason.contains("is no history"));
    QCOMPARE(titleOf(a), QString("Old"));
}

void TestHistoryFailures::aCoverThatCannotBeKeptStays_data()
{
    QTest::addColumn<bool>("isFull");
    QTest::newRow("a full disk") << true;
    QTest::newRow("larger than what is kept") << false;
}

void TestHistoryFailures::aCoverThatCannotBeKeptStays()
{
    QFETCH(bool, isFull);
    const Interposed::Guard guard;
    const std::string a = song("a", "Old", QByteArray(200, 'p'));
    const QByteArray before = read(a);
    m_limits.coverBytes = isFull ? 1000 : 100;
    QCOMPARE(edit(song("other", "Old"), title("New")), QString()); // the journal is there
    if (isFull)
        Interposed::writeFails = [] { return true; };
    TagTexts change = picture("new");
    change.texts.insert("title", "New");
    const QString reason = edit(a, change);
    QVERIFY2(reason.startsWith("it could not be taken back: "), qPrintable(reason));
    Interposed::writeFails = nullptr;
    QCOMPARE(read(a), before);
    QCOMPARE(edit(a, title("New")), QString()); // for which no cover is kept
    QCOMPARE(failuresOf(takeBack()), QStringList());
    QCOMPARE(read(a), before);
}

void TestHistoryFailures::aCoverThatIsNotKeptAnyMoreIsTold()
{
    m_limits.coverBytes = 300;
    const std::string a = song("a", "A", QByteArray(200, 'a'));
    const std::string b = song("b", "B", QByteArray(200, 'b'));
    const QByteArray before = read(b);
    TagTexts change = picture("new");
    change.texts.insert("title", "New");
    QCOMPARE(edit(a, change), QString());
    QCOMPARE(edit(b, change), QString());
    QCOMPARE(failuresOf(takeBack()), QStringList());
    QCOMPARE(read(b), before);
    QCOMPARE(failuresOf(takeBack()), QStringList{"a: its old cover is not kept any more"});
    QCOMPARE(titleOf(a), QString("New"));
}

void TestHistoryFailures::whatNobodySawThroughIsToldByTheFile_data()
{
    QTest::addColumn<QString>("holds");
    QTest::addColumn<QString>("then");
    QTest::addColumn<bool>("isBack");
    QTest::newRow("as before") << "Old"
                               << "Old" << true;
    QTest::newRow("as the edit wanted it") << "New"
                                           << "Old" << true;
    QTest::newRow("something else") << "Another program's"
                                    << "Another program's" << false;
}

void TestHistoryFailures::whatNobodySawThroughIsToldByTheFile()
{
    QFETCH(QString, holds);
    QFETCH(QString, then);
    QFETCH(bool, isBack);
    const std::string a = song("a", "Old", "old picture");
    TagTexts change = picture("new picture");
    change.texts.insert("title", "New");
    QCOMPARE(edit(a, change), QString());
    dropLines("left");
    dropLines("end");
    if (holds != "New")
        song("a", holds, "old picture");
    const StepReturn::Result result = takeBack();
    QCOMPARE(failuresOf(result),
             isBack ? QStringList() : QStringList{"a: another program changed the file since"});
    TagTexts held;
    QCOMPARE(m_tags.read(a, held), QString());
    QCOMPARE(held.texts.value("title"), then);
    QCOMPARE(*held.picture, QByteArray("old picture"));
}

void TestHistoryFailures::aMoveThatNobodySawThroughIsTakenBack()
{
    const std::string a = write("a", "music a");
    const std::string b = write("b", "music b");
    QCOMPARE(trash({a, b}), QStringList());
    dropLines("end");
    QVERIFY(!steps().at(1).isEnded);
    // And before the second one was moved:
    QVERIFY(QFile::rename(m_bin.path("b"), QString::fromStdString(b)));
    const StepReturn::Result result = takeBack();
    QCOMPARE(result.paths, (std::vector<std::string>{b, a}));
    QCOMPARE(read(a) + read(b), QByteArray("music amusic b"));
}

/// A kill came before that was written down, or somebody else did it.
void TestHistoryFailures::whatIsBackAlreadyIsTakenBack()
{
    const std::string a = song("a", "Old");
    const std::string b = write("b", "music b");
    {
        const std::unique_ptr<ChangeStep> step = history().begin("both", m_reason);
        ChangeStep::Edited edited = ChangeStep::Edited::No;
        QCOMPARE(step->edit(a, title("New"), m_tags, edited), QString());
        QCOMPARE(step->moveToTrash(b, FileState::ofEntry(b)), QString());
    }
    QCOMPARE(takeBack().paths.size(), std::size_t(2));
    dropLines("back");
    dropLines("tried");
    const StepReturn::Result again = takeBack();
    QCOMPARE(failuresOf(again), QStringList());
    QCOMPARE(again.paths.size(), std::size_t(2));
    QCOMPARE(titleOf(a), QString("Old"));
    QCOMPARE(read(b), QByteArray("music b"));
}

void TestHistoryFailures::aFullDiskKeepsNoFileInTheTrash()
{
    const Interposed::Guard guard;
    const std::string a = write("a", "music a");
    QCOMPARE(trash({a}), QStringList());
    Interposed::writeFails = [] { return true; };
    QCOMPARE(takeBack().paths, std::vector<std::string>{a});
    QCOMPARE(read(a), QByteArray("music a"));
    Interposed::writeFails = nullptr;
    QCOMPARE(takeBack().paths, std::vector<std::string>{a}); // as nothing was written down
    QCOMPARE(takeBack().step, 0);
}

void TestHistoryFailures::anEditThatIsDoneInPartIsTakenBack()
{
    struct Partial final : PlainTags
    {
        QString write(const std::string& path, const TagTexts& change) override
        {
            TagTexts part = change;
            part.picture.reset();
            PlainTags::write(path, part);
            return "the picture is too large";
        }
    } tags;
    const std::string a = song("a", "Old", "old picture");
    const QByteArray before = read(a);
    TagTexts change = picture("new picture");
    change.texts.insert("title", "New");
    {
        const std::unique_ptr<ChangeStep> step = history().begin("tag", m_reason);
        ChangeStep::Edited edited = ChangeStep::Edited::No;
        QCOMPARE(step->edit(a, change, tags, edited), QString("the picture is too large"));
        QCOMPARE(edited, ChangeStep::Edited::Yes);
    }
    QCOMPARE(titleOf(a), QString("New"));
    QCOMPARE(failuresOf(takeBack()), QStringList());
    QCOMPARE(read(a), before);
}

void TestHistoryFailures::aFileThatIsBeingWrittenStays()
{
    struct Meanwhile final : PlainTags
    {
        QString read(const std::string& path, TagTexts& held) override
        {
            const QString reason = PlainTags::read(path, held);
            Fixtures::saveBytes("title=Another program's\n", QString::fromStdString(path));
            return reason;
        }
    } tags;
    const std::string a = song("a", "Old");
    const std::unique_ptr<ChangeStep> step = history().begin("tag", m_reason);
    ChangeStep::Edited edited = ChangeStep::Edited::Yes;
    QCOMPARE(step->edit(a, title("New"), tags, edited), QString("another program is changing the file"));
    QCOMPARE(edited, ChangeStep::Edited::No);
    QVERIFY(step->isEmpty());
    QCOMPARE(titleOf(a), QString("Another program's"));
}

QTEST_GUILESS_MAIN(TestHistoryFailures)
#include "tst_historyfailures.moc"
