#include "collection/historyline.h"
#include "collection/historysteps.h"

#include <QtTest>

using base::FileState;

namespace {
FileState stateOf(std::int64_t size, std::int64_t modified, bool link = false)
{
    FileState state;
    state.size = size;
    state.modified = modified;
    state.link = link;
    return state;
}

FileChange trashed()
{
    FileChange change;
    change.kind = FileChange::Kind::Trashed;
    change.path = "/music/a\n \xff%.mp3";
    change.before = stateOf(5000000000, 1700000000123456789, true);
    change.trash = "/home/u/.local/share/Trash";
    change.nameInTrash = "a\n \xff%.2.mp3";
    return change;
}

FileChange edited()
{
    FileChange change;
    change.kind = FileChange::Kind::Edited;
    change.path = "/music/b.mp3";
    change.before = stateOf(10, -20);
    change.fields = {{"title", QString(), QStringLiteral("Ünï = \"%20\"")},
                     {"a field", "a\tb\r\n", QString()}};
    change.coverChanged = true;
    change.newCover = "abc";
    return change;
}

FileChange deleted()
{
    FileChange change;
    change.path = "/music/c.mp3";
    change.before = stateOf(3, 4);
    return change;
}

FileChange takenOut()
{
    FileChange change;
    change.kind = FileChange::Kind::TakenOut;
    change.path = "/music/Library \xff.xml";
    change.before = stateOf(300, 400);
    change.tracks = 12;
    change.taken = "a1b2";
    return change;
}
} // namespace

class TestHistorySteps : public QObject
{
    Q_OBJECT

private slots:
    void aLineSaysWhatWasPutIn();
    void aLineThatIsNotWholeSaysNothing();
    void changesAreReadAsTheyWereWritten();
    void whatWasNotDoneIsNoChange();
    void stepsEndAndAreTried();
    void linesOfNoStepArePassedOver();
    void aDamagedLineTakesNoOtherAway();
    void whatAnEditLeftGoesOnThroughWhatIsTakenBack();
    void whatWasFoundGoesOnThroughWhatIsTakenBack();

private:
    static HistorySteps read(const std::string& lines);
};

HistorySteps TestHistorySteps::read(const std::string& lines)
{
    HistorySteps steps;
    for (const QByteArray& line : QByteArray::fromStdString(lines).split('\n'))
        steps.take(line.toStdString());
    return steps;
}

void TestHistorySteps::aLineSaysWhatWasPutIn()
{
    const std::string text("\0 \n=%\x7f\xc3\xbc\xff", 9);
    const std::string line = HistoryLine("word").number(-7).text("").text(text).whole();
    QCOMPARE(line.find('\n'), line.size() - 1);
    const std::string content = line.substr(0, line.size() - 1);
    HistoryLine::Reader reader(content);
    QVERIFY(reader.what() == "word");
    QCOMPARE(reader.number(), std::int64_t(-7));
    QCOMPARE(reader.text(), std::string());
    QCOMPARE(reader.text(), text);
    QVERIFY(reader.isGood() && reader.isAtEnd());
    reader.number();
    QVERIFY(!reader.isGood());
}

void TestHistorySteps::aLineThatIsNotWholeSaysNothing()
{
    const std::string line = HistorySteps::changeLine(1, 1, edited());
    for (std::size_t size = 0; size + 1 < line.size(); ++size)
        QVERIFY(!HistorySteps::stepOf(line.substr(0, size)));
    for (std::size_t at = 0; at + 1 < line.size(); ++at) {
        std::string damaged = line.substr(0, line.size() - 1);
        damaged[at] ^= 1;
        QVERIFY(!HistorySteps::stepOf(damaged));
    }
    for (const char* odd : {"what", "what =text", "what 0", "what -1", "what 9999999999", "what 1x", ""}) {
        const std::string whole = HistoryLine(odd).whole();
        QVERIFY2(!HistorySteps::stepOf(whole.substr(0, whole.size() - 1)), odd);
    }
}

void TestHistorySteps::changesAreReadAsTheyWereWritten()
{
    const HistorySteps history = read(
        HistorySteps::beginLine(3, 1700000000, "clean /a b") + HistorySteps::changeLine(3, 1, trashed()) +
        HistorySteps::changeLine(3, 2, edited()) + HistorySteps::leftLine(3, 2, stateOf(8, 9)) +
        HistorySteps::changeLine(3, 3, deleted()) + HistorySteps::changeLine(3, 4, takenOut()));
    const HistoryStep& step = history.all().at(3);
    QCOMPARE(step.number, 3);
    QCOMPARE(step.time, std::int64_t(1700000000));
    QCOMPARE(step.what, std::string("clean /a b"));
    QVERIFY(!step.isEnded && !step.wasTried);
    QCOMPARE(step.changes.size(), std::size_t(4));
    const FileChange& fourth = step.changes.at(4);
    QCOMPARE(fourth.kind, FileChange::Kind::TakenOut);
    QCOMPARE(fourth.path, takenOut().path);
    QCOMPARE(fourth.tracks, 12);
    QCOMPARE(fourth.taken, takenOut().taken);
    const FileChange& first = step.changes.at(1);
    QCOMPARE(first.kind, FileChange::Kind::Trashed);
    QCOMPARE(first.trashedFile().path, trashed().path);
    QCOMPARE(first.trashedFile().trash, trashed().trash);
    QCOMPARE(first.trashedFile().name, trashed().nameInTrash);
    QVERIFY(first.trashedFile().state.looksLike(trashed().before));
    const FileChange& second = step.changes.at(2);
    QCOMPARE(second.kind, FileChange::Kind::Edited);
    QCOMPARE(second.fields.size(), 2);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(second.fields.at(i).name, edited().fields.at(i).name);
        QCOMPARE(second.fields.at(i).old, edited().fields.at(i).old);
        QCOMPARE(second.fields.at(i).now, edited().fields.at(i).now);
    }
    QVERIFY(second.coverChanged && second.oldCover.empty() && second.newCover == "abc");
    QVERIFY(second.before.looksLike(edited().before) && second.after->looksLike(stateOf(8, 9)));
    QCOMPARE(step.changes.at(3).kind, FileChange::Kind::Deleted);
    QCOMPARE(step.changes.at(3).path, deleted().path);
}

void TestHistorySteps::whatWasNotDoneIsNoChange()
{
    const HistorySteps history =
        read(HistorySteps::beginLine(1, 0, "x") + HistorySteps::changeLine(1, 1, trashed()) +
             HistorySteps::changeLine(1, 2, edited()) + HistorySteps::notDoneLine(1, 1));
    QCOMPARE(history.all().at(1).changes.size(), std::size_t(1));
    QCOMPARE(history.all().at(1).changesLeft(), 1);
}

void TestHistorySteps::stepsEndAndAreTried()
{
    const HistorySteps history =
        read(HistorySteps::beginLine(1, 0, "x") + HistorySteps::changeLine(1, 1, trashed()) +
             HistorySteps::endLine(1) + HistorySteps::beginLine(2, 0, "y") + HistorySteps::triedLine(1) +
             HistorySteps::backLine(1, 1, trashed().before));
    QVERIFY(history.all().at(1).isEnded && history.all().at(1).wasTried);
    QVERIFY(history.all().at(1).changes.at(1).isBack);
    QCOMPARE(history.all().at(1).changesLeft(), 0);
    QVERIFY(!history.all().at(2).isEnded && !history.all().at(2).wasTried);
}

void TestHistorySteps::linesOfNoStepArePassedOver()
{
    const HistorySteps history = read(HistorySteps::changeLine(1, 1, trashed()) + HistorySteps::endLine(1) +
                                      HistorySteps::beginLine(2, 0, "y") + HistorySteps::backLine(2, 5, {}) +
                                      HistorySteps::leftLine(2, 5, {}) + HistorySteps::notDoneLine(2, 5) +
                                      HistoryLine("what a later version says").number(2).whole());
    QCOMPARE(history.all().size(), std::size_t(1));
    QCOMPARE(history.all().at(2).changes.size(), std::size_t(0));
}

void TestHistorySteps::aDamagedLineTakesNoOtherAway()
{
    std::string first = HistorySteps::changeLine(1, 1, trashed());
    first[30] ^= 1;
    const HistorySteps history =
        read(HistorySteps::beginLine(1, 0, "x") + first + HistorySteps::changeLine(1, 2, edited()) +
             HistorySteps::leftLine(1, 2, stateOf(8, 9)));
    QCOMPARE(history.all().at(1).changes.size(), std::size_t(1));
    QVERIFY(history.all().at(1).changes.at(2).after);
}

/// The file is again as the edit left it, though a newer one.
void TestHistorySteps::whatAnEditLeftGoesOnThroughWhatIsTakenBack()
{
    FileChange second = edited();
    second.before = stateOf(8, 9);
    FileChange other = second;
    other.path = "/music/other.mp3";
    const HistorySteps history =
        read(HistorySteps::beginLine(1, 0, "x") + HistorySteps::changeLine(1, 1, edited()) +
             HistorySteps::leftLine(1, 1, stateOf(8, 9)) + HistorySteps::changeLine(1, 2, other) +
             HistorySteps::leftLine(1, 2, stateOf(8, 9)) + HistorySteps::changeLine(1, 3, edited()) +
             HistorySteps::beginLine(2, 0, "y") + HistorySteps::changeLine(2, 1, second) +
             HistorySteps::leftLine(2, 1, stateOf(80, 90)) + HistorySteps::backLine(2, 1, stateOf(8, 10)));
    QVERIFY(history.left(history.all().at(1).changes.at(1))->looksLike(stateOf(8, 10)));
    QVERIFY(history.left(history.all().at(1).changes.at(2))->looksLike(stateOf(8, 9)));
    QVERIFY(!history.left(history.all().at(1).changes.at(3)));
}

/// A kill came before the file left for the trash, and an edit of it after that is taken back.
void TestHistorySteps::whatWasFoundGoesOnThroughWhatIsTakenBack()
{
    FileChange kept = edited();
    kept.kind = FileChange::Kind::Trashed;
    const std::string lines = HistorySteps::beginLine(1, 0, "x") + HistorySteps::changeLine(1, 1, kept) +
                              HistorySteps::beginLine(2, 0, "y") + HistorySteps::changeLine(2, 1, edited());
    const HistorySteps before = read(lines);
    QVERIFY(before.found(before.all().at(1).changes.at(1)).looksLike(kept.before));
    const HistorySteps after = read(lines + HistorySteps::backLine(2, 1, stateOf(8, 10)));
    QVERIFY(after.found(after.all().at(1).changes.at(1)).looksLike(stateOf(8, 10)));
}

QTEST_APPLESS_MAIN(TestHistorySteps)
#include "tst_historysteps.moc"
