// What clean takes away, and what undo brings back.
#include "clirun.h"

class TestCliClean : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aPlanTouchesNothing();
    void whatGoesLiesInTheTrashAndComesBack();
    void theRulesSayWhatIsKept_data();
    void theRulesSayWhatIsKept();
    void rulesThatMakeNoSenseEndWithTwo_data();
    void rulesThatMakeNoSenseEndWithTwo();
    void whatIsDeletedForGoodIsGone();
    void aFileOfAKeptOneIsNeverLost();
    void aDocumentSaysWhatBecameOfWhat();
    void editsAreTakenBack();
    void stepsAreListed();
    void whatChangedSinceStaysAsItIs();
    void nothingToTakeBackIsTold();
    void withoutAHistoryNothingIsChanged();

private:
    QStringList songs() const { return QDir(m_run->path()).entryList({"*.mp3", "*.flac"}, QDir::Files); }

    std::unique_ptr<CliRun> m_run;
};

void TestCliClean::init()
{
    m_run = std::make_unique<CliRun>();
    m_run->addSong("a.mp3", CliRun::texts("Halo"));
    m_run->addSong("b.flac", CliRun::texts("Halo"), "flac");
    m_run->addSong("c.mp3", CliRun::texts("Halo"), "mp3", Fixtures::jpeg(400, 400, 1));
    m_run->addSong("d.mp3", CliRun::texts("Wren"));
}

void TestCliClean::aPlanTouchesNothing()
{
    const CliRun::Answer answer = m_run->ask({"clean", "--keep", "best", "."});
    QCOMPARE(answer.code, 0);
    const QList<QByteArray> lines = answer.output.split('\n');
    QCOMPARE(lines.size(), 7);
    QVERIFY2(lines[0] == "Halo (3)" && lines[1].startsWith("  goes  MP3 "), answer.output);
    QVERIFY2(lines[2].startsWith("  kept  FLAC ") && lines[2].endsWith("./b.flac (sounds best)"),
             answer.output);
    QVERIFY2(lines[3].endsWith("./c.mp3") && lines[5].startsWith("2 files for the trash, "), answer.output);
    QCOMPARE(answer.errors, QByteArray("melodrift-cli: nothing was done; --yes does it\n"));
    QCOMPARE(songs().size(), 4);
    QVERIFY(m_run->ask({"history"}).output.isEmpty());
}

void TestCliClean::whatGoesLiesInTheTrashAndComesBack()
{
    const CliRun::Answer answer = m_run->ask({"clean", "--keep", "first", "--yes", "."});
    QCOMPARE(answer.code, 0);
    QCOMPARE(
        answer.errors,
        QByteArray("melodrift-cli: 2 files moved into the trash; melodrift-cli undo 1 brings them back\n"));
    QCOMPARE(songs(), QStringList({"a.mp3", "d.mp3"}));
    const CliRun::Answer undone = m_run->ask({"undo"});
    QCOMPARE(undone.code, 0);
    QCOMPARE(undone.errors, QByteArray("melodrift-cli: step 1: 2 files as before\n"));
    QCOMPARE(songs(), QStringList({"a.mp3", "b.flac", "c.mp3", "d.mp3"}));
    QCOMPARE(AudioFile::read(m_run->path("c.mp3")).texts.value(TAG_TITLE), QString("Halo"));
}

void TestCliClean::theRulesSayWhatIsKept_data()
{
    QTest::addColumn<QStringList>("rules");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("the best") << QStringList({"--keep", "best"}) << QStringList({"b.flac", "d.mp3"});
    QTest::newRow("one in a folder that is none's")
        << QStringList({"--keep", "in:home", "--keep", "first"}) << QStringList({"a.mp3", "d.mp3"});
    QTest::newRow("several in order")
        << QStringList({"--keep", "shortest-path,largest"}) << QStringList({"c.mp3", "d.mp3"});
}

void TestCliClean::theRulesSayWhatIsKept()
{
    QFETCH(QStringList, rules);
    QFETCH(QStringList, left);
    QCOMPARE(m_run->ask(QStringList{"clean", "--yes"} + rules + QStringList{"."}).code, 0);
    QCOMPARE(songs(), left);
}

void TestCliClean::rulesThatMakeNoSenseEndWithTwo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("part");
    QTest::newRow("none") << QStringList({"clean", "."}) << QByteArray("--keep");
    QTest::newRow("unknown") << QStringList({"clean", "--keep", "prettiest", "."}) << QByteArray("prettiest");
    QTest::newRow("no folder") << QStringList({"clean", "--keep", "in:nowhere", "."})
                               << QByteArray("nowhere");
    QTest::newRow("no step") << QStringList({"undo", "last"}) << QByteArray("last");
}

void TestCliClean::rulesThatMakeNoSenseEndWithTwo()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, part);
    const CliRun::Answer answer = m_run->ask(arguments);
    QCOMPARE(answer.code, 2);
    QVERIFY2(answer.errors.contains(part), answer.errors);
    QCOMPARE(songs().size(), 4);
}

void TestCliClean::whatIsDeletedForGoodIsGone()
{
    const CliRun::Answer answer = m_run->ask({"clean", "--keep", "first", "--yes", "--delete", "."});
    QCOMPARE(answer.code, 0);
    QVERIFY2(answer.output.contains("2 files to be deleted for good"), answer.output);
    QCOMPARE(answer.errors, QByteArray("melodrift-cli: 2 files deleted\n"));
    QCOMPARE(songs(), QStringList({"a.mp3", "d.mp3"}));
    QCOMPARE(m_run->ask({"undo"}).code, 3);
    QCOMPARE(songs().size(), 2);
}

void TestCliClean::aFileOfAKeptOneIsNeverLost()
{
    QDir(m_run->path()).mkdir("music");
    for (const char* name : {"a.mp3", "b.flac", "c.mp3"})
        QVERIFY(QFile::rename(m_run->path(name), m_run->path("music/") + name));
    QVERIFY(QFile::link(m_run->path("music"), m_run->path("other")));
    QCOMPARE(m_run->ask({"clean", "--keep", "first", "--yes", "music/a.mp3", "other/a.mp3", "music"}).code,
             0);
    QCOMPARE(QDir(m_run->path("music")).entryList(QDir::Files), QStringList({"a.mp3"}));
}

void TestCliClean::aDocumentSaysWhatBecameOfWhat()
{
    const QJsonObject document = m_run->ask({"clean", "--json", "--keep", "best", "--yes", "."}).document();
    const QJsonArray group = document["groups"].toArray().at(0).toObject()["songs"].toArray();
    QStringList fates;
    for (const QJsonValue& song : group)
        fates.append(song.toObject()["fate"].toString());
    QCOMPARE(fates, QStringList({"goes", "kept", "goes"}));
    QCOMPARE(group[1].toObject()["reason"].toString(), QString("sounds best"));
    const QJsonObject counts = document["counts"].toObject();
    QCOMPARE(counts["going"].toInt(), 2);
    QCOMPARE(counts["gone"].toInt(), 2);
    QCOMPARE(counts["step"].toInt(), 1);
    const int freed = group[0].toObject()["bytes_freed"].toInt() + group[2].toObject()["bytes_freed"].toInt();
    QCOMPARE(counts["bytes_freed"].toInt(), freed);
    QVERIFY(freed > 0);
    const QJsonObject undone = m_run->ask({"undo", "--json", "1"}).document();
    QCOMPARE(undone["songs"].toArray().size(), 2);
    QCOMPARE(undone["counts"].toObject()["step"].toInt(), 1);
}

void TestCliClean::editsAreTakenBack()
{
    const AudioFile::Content before = AudioFile::read(m_run->path("c.mp3"));
    QCOMPARE(m_run->ask({"tag", "--title", "x", "--clear-cover", "--track", "9", "c.mp3", "a.mp3"}).code, 0);
    QCOMPARE(m_run->ask({"tag", "--genre", "Rock", "c.mp3"}).code, 0);
    QCOMPARE(m_run->ask({"undo"}).code, 0);
    QCOMPARE(AudioFile::read(m_run->path("c.mp3")).texts.value(TAG_TITLE), QString("x"));
    QCOMPARE(m_run->ask({"undo"}).code, 0);
    const AudioFile::Content after = AudioFile::read(m_run->path("c.mp3"));
    QCOMPARE(after.texts, before.texts);
    QCOMPARE(after.picture, before.picture);
}

void TestCliClean::stepsAreListed()
{
    QCOMPARE(m_run->ask({"tag", "--genre", "Rock", "a.mp3", "d.mp3"}).code, 0);
    QCOMPARE(m_run->ask({"clean", "--keep", "first", "--yes", "."}).code, 0);
    QCOMPARE(m_run->ask({"undo", "1"}).code, 0);
    const QByteArray text = m_run->ask({"history"}).output;
    QVERIFY2(text.startsWith("   1  20") &&
                 text.contains("  tag --genre Rock a.mp3 d.mp3  (2 files, taken back)\n"),
             text);
    QVERIFY2(text.contains("  clean --keep first --yes .  (2 files)\n"), text);
    const QByteArray more = m_run->ask({"history", "-v"}).output;
    QVERIFY2(more.contains("      edited   ") && more.contains("a.mp3 (taken back)\n"), more);
    QVERIFY2(more.contains("      trashed  ") && more.contains("b.flac\n"), more);
    const QJsonArray steps = m_run->ask({"history", "--json"}).document()["steps"].toArray();
    QCOMPARE(steps.size(), 2);
    QCOMPARE(steps[1].toObject()["changes"].toArray().at(0).toObject()["kind"].toString(),
             QString("trashed"));
}

void TestCliClean::whatChangedSinceStaysAsItIs()
{
    QCOMPARE(m_run->ask({"tag", "--title", "x", "a.mp3", "d.mp3"}).code, 0);
    QCOMPARE(AudioFile::write(m_run->path("a.mp3"), {{TAG_TITLE, "another program's"}}), 0);
    const CliRun::Answer answer = m_run->ask({"undo"});
    QCOMPARE(answer.code, 3);
    QVERIFY2(answer.errors.contains("a.mp3: "), answer.errors);
    QCOMPARE(AudioFile::read(m_run->path("a.mp3")).texts.value(TAG_TITLE), QString("another program's"));
    QCOMPARE(AudioFile::read(m_run->path("d.mp3")).texts.value(TAG_TITLE), QString("Wren"));
}

void TestCliClean::nothingToTakeBackIsTold()
{
    const CliRun::Answer answer = m_run->ask({"undo"});
    QCOMPARE(answer.code, 3);
    QCOMPARE(answer.errors, QByteArray("melodrift-cli: there is nothing to take back\n"));
    QCOMPARE(m_run->ask({"history"}).errors, QByteArray("melodrift-cli: nothing was changed\n"));
}

void TestCliClean::withoutAHistoryNothingIsChanged()
{
    QDir(m_run->path("home")).mkdir(".local");
    m_run->addFile("home/.local/state", "no folder");
    for (const QStringList& call : {QStringList{"clean", "--keep", "first", "--yes", "."},
                                    QStringList{"tag", "--title", "x", "a.mp3"}}) {
        const CliRun::Answer answer = m_run->ask(call);
        QCOMPARE(answer.code, 3);
        QVERIFY2(answer.errors.contains("the history cannot be written"), answer.errors);
    }
    QCOMPARE(songs().size(), 4);
    QCOMPARE(AudioFile::read(m_run->path("a.mp3")).texts.value(TAG_TITLE), QString("Halo"));
}

QTEST_GUILESS_MAIN(TestCliClean)
#include "tst_cliclean.moc"
