// What the bytes of a journal say, line by line, whole or not.
#include "library/journallines.h"

#include <QtTest>

using itunes::ChangeKind;
using itunes::JournalKind;
using itunes::JournalLines;
using itunes::JournalRecord;
using itunes::RecordState;

class TestJournalLines : public QObject
{
    Q_OBJECT

private slots:
    void aLineSaysWhatWasWritten_data();
    void aLineSaysWhatWasWritten();
    void aReturnNamesItsTracks();
    void aReversalSaysHowTheMediaFileWas();
    void whatNoCallCanHaveSaidIsNoRecord_data();
    void whatNoCallCanHaveSaidIsNoRecord();
    void earlierLinesAreUnderstood();
    void aJournalIsToldByItsBeginning_data();
    void aJournalIsToldByItsBeginning();
    void whatIsNotWholeIsBlanked_data();
    void whatIsNotWholeIsBlanked();
    void onlyTheLastEditMayBeBegun();
    void thereIsAMostOfRecords();
};

namespace {
constexpr std::uint64_t id = 0xA1;

JournalRecord deletion(std::uint64_t of = id)
{
    JournalRecord record;
    record.id = of;
    record.kind = ChangeKind::Deletion;
    return record;
}

JournalRecord edit(const std::string& name)
{
    JournalRecord record;
    record.id = id;
    record.edit.name = name;
    record.edit.genre = std::string();
    record.edit.year = 1987;
    record.cover = {"/a\tb\\", 0xFE};
    return record;
}

std::string line(const JournalRecord& record, RecordState state = RecordState::Counts)
{
    return itunes::lineOf(record, state);
}

/// Without state, checksum and line feed.
std::string contentOf(const JournalRecord& record)
{
    const std::string whole = line(record);
    return whole.substr(1, whole.rfind('\t') - 1);
}

bool isRecord(const std::string& content)
{
    return itunes::recordOf(itunes::withChecksum('+' + content)).has_value();
}

JournalLines readLines(const std::string& lines)
{
    JournalLines read;
    if (!itunes::readJournal(std::string(itunes::journalsFirstLine) + lines, read))
        read.records = 0;
    return read;
}

/// What a call would have to give in the third field behind the kind and the identifier.
std::string replaced(std::string content, const std::string& what, const std::string& with)
{
    return content.replace(content.find(what), what.size(), with);
}
} // namespace

void TestJournalLines::aLineSaysWhatWasWritten_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"", "Harbour", "a\tb\nc", "\\", "\\n\\t", "a\\", "Käse \xF0\x9F\x98\x80"})
        QTest::newRow(name) << QString::fromUtf8(name);
}

void TestJournalLines::aLineSaysWhatWasWritten()
{
    QFETCH(QString, name);
    for (const RecordState state : {RecordState::Counts, RecordState::Begun, RecordState::Failed}) {
        std::string written = line(edit(name.toStdString()), state);
        QCOMPARE(written.find('\n'), written.size() - 1);
        written.pop_back();
        const auto read = itunes::recordOf(written);
        QVERIFY(read);
        QVERIFY(read->second == state);
        const JournalRecord& record = read->first;
        QVERIFY(record.kind == ChangeKind::Edit);
        QCOMPARE(record.id, id);
        QCOMPARE(QString::fromStdString(record.edit.name.value_or("none")), name);
        QVERIFY(!record.edit.artist && !record.edit.album);
        QCOMPARE(record.edit.genre.value_or("none"), std::string());
        QCOMPARE(record.edit.year.value_or(0), 1987);
        QCOMPARE(record.cover.path, std::string("/a\tb\\"));
        QCOMPARE(record.cover.hash, std::uint64_t(0xFE));
    }
    const auto deleted = itunes::recordOf(line(deletion()).substr(0, line(deletion()).size() - 1));
    QVERIFY(deleted && deleted->first.kind == ChangeKind::Deletion);
    QCOMPARE(deleted->first.id, id);
}

void TestJournalLines::aReturnNamesItsTracks()
{
    JournalRecord record;
    record.kind = ChangeKind::Return;
    for (const std::size_t tracks : {1, 2, 300}) {
        while (record.returned.size() < tracks)
            record.returned.push_back(id + record.returned.size());
        const auto read = itunes::recordOf(line(record).substr(0, line(record).size() - 1));
        QVERIFY(read && read->first.kind == ChangeKind::Return);
        QCOMPARE(read->first.id, id);
        QVERIFY(read->first.returned == record.returned);
    }
}

void TestJournalLines::aReversalSaysHowTheMediaFileWas()
{
    JournalRecord record = edit("Harbour");
    record.kind = ChangeKind::Reversal;
    record.media = {0x1234, -5};
    const auto read = itunes::recordOf(line(record).substr(0, line(record).size() - 1));
    QVERIFY(read && read->first.kind == ChangeKind::Reversal);
    QCOMPARE(QString::fromStdString(read->first.edit.name.value_or("none")), QStringLiteral("Harbour"));
    QVERIFY(read->first.media == record.media);
    QVERIFY(read->first.cover.path.empty());
}

void TestJournalLines::whatNoCallCanHaveSaidIsNoRecord_data()
{
    QTest::addColumn<QString>("content");
    QTest::addColumn<bool>("is");
    const auto row = [](const char* name, const std::string& content, bool is = false) {
        QTest::newRow(name) << QString::fromStdString(content) << is;
    };
    const std::string usual = contentOf(edit("Harbour"));
    const std::string gone = contentOf(deletion());
    row("an edit", usual, true);
    row("a deletion", gone, true);
    row("a field too many", usual + "\tmore");
    row("a field too few", usual.substr(0, usual.rfind('\t')));
    row("a kind and an identifier", gone.substr(gone.find('\t')).insert(0, "change"));
    row("an identifier alone", gone.substr(gone.find('\t') + 1));
    row("a deletion with more", gone + "\tmore");
    const std::string back = "return" + gone.substr(gone.find('\t'));
    row("a return", back, true);
    row("a return of two", back + " 00000000000000A2", true);
    row("a return that ends in a blank", back + ' ');
    row("a return of two without a blank", back + "_00000000000000A2");
    row("a return of a short identifier", back.substr(0, back.size() - 16) + "A1 00000000000000A2");
    row("a return of none among others", back + " 0000000000000000");
    row("another kind", "keep" + usual.substr(usual.find('\t')));
    row("another kind of little", "keep" + gone.substr(gone.find('\t')));
    row("no identifier", replaced(gone, "00000000000000A1", "0000000000000000"));
    row("an identifier that is none", replaced(gone, "A1", "G1"));
    row("a name without its mark", replaced(usual, "=Harbour", "Harbour"));
    row("a year that is none", replaced(usual, "=1987", "=1987a"));
    row("no year in the mark", replaced(usual, "=1987", "="));
    row("no year", replaced(usual, "=1987", ""), true);
    row("the last year", replaced(usual, "=1987", "=2147483647"), true);
    row("a year behind it", replaced(usual, "=1987", "=2147483648"));
    row("nothing", "");
}

void TestJournalLines::whatNoCallCanHaveSaidIsNoRecord()
{
    QFETCH(QString, content);
    QFETCH(bool, is);
    const std::string text = content.toStdString();
    QCOMPARE(isRecord(text), is);
    const std::string whole = itunes::withChecksum('+' + text);
    for (const char* state : {"", "!", "\t"})
        QVERIFY(!itunes::recordOf(state + whole.substr(1)));
    std::string changed = whole;
    changed.back() = changed.back() == '0' ? '1' : '0';
    QVERIFY(!itunes::recordOf(changed));
    QVERIFY(!itunes::recordOf(whole.substr(0, whole.rfind('\t'))));
    QVERIFY(!itunes::recordOf(whole + '\n'));
}

void TestJournalLines::earlierLinesAreUnderstood()
{
    const std::string content = "edit\t00000000000000A1\tHarbour\tA\\tB\t\t\t1987";
    const auto read = itunes::recordOf(itunes::withChecksum('+' + content));
    QVERIFY(read);
    QCOMPARE(read->first.edit.name.value_or("none"), std::string("Harbour"));
    QCOMPARE(read->first.edit.artist.value_or("none"), std::string("A\tB"));
    QCOMPARE(read->first.edit.genre.value_or("none"), std::string());
    QCOMPARE(read->first.edit.year.value_or(0), 1987);
    QVERIFY(!isRecord(content + "\tmore"));
    QVERIFY(!isRecord(content.substr(0, content.rfind('\t'))));
    // What stands behind a backslash stands for itself, and one at the end is one.
    const auto odd = itunes::recordOf(itunes::withChecksum("+edit\t00000000000000A1\t\\a\\\\\\\t\t\t\t1"));
    QVERIFY(odd);
    QCOMPARE(odd->first.edit.name.value_or("none"), std::string("a\\\\"));
}

void TestJournalLines::aJournalIsToldByItsBeginning_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("kind");
    const QByteArray first(itunes::journalsFirstLine.data(), int(itunes::journalsFirstLine.size()));
    const QByteArray former = "melodrift journal 1\n";
    const int blank = int(JournalKind::Blank);
    const int journal = int(JournalKind::Journal);
    const int other = int(JournalKind::Other);
    QTest::newRow("nothing") << QByteArray() << blank;
    QTest::newRow("room") << QByteArray("\n\0\n\0", 4) << blank;
    QTest::newRow("a first line alone") << first << blank;
    QTest::newRow("half of one") << first.left(5) << blank;
    QTest::newRow("half of one, and room") << first.left(5) + "\n\n" << blank;
    QTest::newRow("a former one") << former + "\n" << blank;
    QTest::newRow("a line") << first + "x" << journal;
    QTest::newRow("a line behind a former one") << former + "x" << journal;
    QTest::newRow("something else") << QByteArray("x") << other;
    QTest::newRow("another number") << QByteArray("melodrift journal 9\nx") << other;
    QTest::newRow("no line feed") << first.chopped(1) + "x" << other;
}

void TestJournalLines::aJournalIsToldByItsBeginning()
{
    QFETCH(QByteArray, bytes);
    QTEST(int(itunes::journalKindOf({bytes.constData(), std::size_t(bytes.size())})), "kind");
}

void TestJournalLines::whatIsNotWholeIsBlanked_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QByteArray>("mended");
    QTest::addColumn<int>("records");
    QTest::addColumn<int>("damaged");
    const QByteArray one = QByteArray::fromStdString(line(deletion(1)));
    const QByteArray two = QByteArray::fromStdString(line(deletion(2)));
    const auto blank = [](int count) { return QByteArray(count, '\n'); };
    QTest::newRow("none") << QByteArray() << QByteArray() << 0 << 0;
    QTest::newRow("two") << one + two << one + two << 2 << 0;
    QTest::newRow("room behind") << one + blank(5) << one + blank(5) << 1 << 0;
    QTest::newRow("room between") << one + blank(5) + two << one + blank(5) + two << 2 << 0;
    QTest::newRow("one not whole at the end") << one + "half" << one + blank(4) << 1 << 0;
    QTest::newRow("one not whole in front") << "half\n" + two << blank(5) + two << 1 << 1;
    QTest::newRow("two not whole") << "half\n" + one + "x\n" + two << blank(5) + one + blank(2) + two << 2
                                   << 2;
    QTest::newRow("the last two") << one + "half\nx" << one + blank(6) << 1 << 1;
    QTest::newRow("no line feed at the end") << one + two.chopped(1) << one + two << 2 << 0;
}

void TestJournalLines::whatIsNotWholeIsBlanked()
{
    QFETCH(QByteArray, lines);
    QFETCH(QByteArray, mended);
    QFETCH(int, records);
    QFETCH(int, damaged);
    const int first = int(itunes::journalsFirstLine.size());
    const JournalLines read = readLines(lines.toStdString());
    QCOMPARE(QByteArray::fromStdString(read.mended).mid(first), mended);
    QCOMPARE(int(read.records), records);
    QCOMPARE(int(read.damaged), damaged);
    QCOMPARE(int(read.content.changes.size()), records);
    const QByteArray last = QByteArray::fromStdString(line(deletion(mended.contains("2\t") ? 2 : 1)));
    const int place = records > 0 ? mended.lastIndexOf(last) : -1;
    QCOMPARE(int(read.last), place < 0 ? 0 : first + place);
    QCOMPARE(int(read.end), place < 0 ? first : first + place + last.size());
    const bool isMended = mended != lines && mended != lines + '\n';
    QCOMPARE(read.mendedEnd > read.mendedBegin, isMended);
    if (isMended) {
        const int begin = qMax(0, qMin(lines.indexOf("half"), lines.size()));
        QCOMPARE(int(read.mendedBegin), first + begin);
        const int end = lines.contains("x") ? lines.indexOf("x") + 1 : begin + 4;
        QCOMPARE(int(read.mendedEnd), first + end);
    }
}

void TestJournalLines::onlyTheLastEditMayBeBegun()
{
    const std::string begun = line(edit("Begun"), RecordState::Begun);
    const std::string counts = line(edit("Counts"));
    QVERIFY(readLines(counts + begun).content.begun);
    QCOMPARE(readLines(counts + begun).content.begun->edit.name.value_or("none"), std::string("Begun"));
    QVERIFY(!readLines(begun + counts).content.begun);
    QVERIFY(!readLines(begun + line(edit("Failed"), RecordState::Failed)).content.begun);
    QCOMPARE(readLines(begun).content.changes.size(), std::size_t(0));
    QCOMPARE(readLines(line(edit("Failed"), RecordState::Failed)).content.changes.size(), std::size_t(0));
}

void TestJournalLines::thereIsAMostOfRecords()
{
    std::string lines;
    for (std::size_t i = 0; i < itunes::mostJournalRecords; ++i)
        lines += line(deletion());
    QCOMPARE(readLines(lines).records, itunes::mostJournalRecords);
    QCOMPARE(readLines(lines + line(deletion())).records, std::size_t(0));
}

QTEST_GUILESS_MAIN(TestJournalLines)
#include "tst_journallines.moc"
