// The commands about a music library.
#include "clilibrary.h"

#include <sys/stat.h>

class TestCliLibrary : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void lookingChangesNothing_data();
    void lookingChangesNothing();
    void aScanCounts();
    void undefinedTracksAreListed();
    void groupsAreThoseOfTheWindow();
    void eachFormOfOutputHasTheTracks();
    void aPlanIsShownAndNothingElse();
    void whatGoesComesBackByteForByte();
    void whatIsDeletedForGoodLeavesTheTracksToUndo();
    void aFileThatATrackLeftNeedsStays();
    void aFilmsFileStays();
    void aLinkLeadsToTheLibrary();
    void aLibraryThatChangedSinceStaysAsItIs();
    void aLibraryInUseIsLeft();
    void problemsAreListed();
    void whatIsFoundIsTold_data();
    void whatIsFoundIsTold();
    void whatIsNoLibraryIsNamed_data();
    void whatIsNoLibraryIsNamed();
    void callsThatMakeNoSenseEndWithTwo_data();
    void callsThatMakeNoSenseEndWithTwo();
    void textsOfTheLibraryControlNoTerminal();
    void withoutAHistoryNothingIsChanged();

private:
    std::unique_ptr<CliLibrary> m_run;
};

/// Three copies of one song, one of which is longer and better, and others.
void TestCliLibrary::init()
{
    m_run = std::make_unique<CliLibrary>();
    m_run->add("m/a.mp3", "Halo", 200000);
    m_run->add("m/b.mp3", "Wren", 100000);
    m_run->add("m/c.mp3", "Halo", 200000).bitRate = 320;
    m_run->add("m/d.mp3", "Halo", 190000);
    m_run->add("m/e.mp3", "Amber", 90000).genre.clear();
    m_run->add("m/f.mp3", "Gone", 80000, false);
    m_run->add("m/g.mp4", "Film", 200000).further = "<key>Movie</key><true/>";
    m_run->add("m/h.mp3", "Stream", 70000, false).type = "URL";
    m_run->write();
}

void TestCliLibrary::lookingChangesNothing_data()
{
    QTest::addColumn<QStringList>("arguments");
    for (const char* command : {"scan", "undefined", "duplicates", "check"})
        QTest::newRow(command) << QStringList(command);
    QTest::newRow("clean") << QStringList({"clean", "--keep", "best"});
}

void TestCliLibrary::lookingChangesNothing()
{
    QFETCH(QStringList, arguments);
    const QMap<QString, QByteArray> before = m_run->files();
    QVERIFY(before.size() > 6);
    QCOMPARE(m_run->library(arguments).code, 0);
    QCOMPARE(m_run->files(), before);
    QVERIFY(QDir(m_run->path("home")).isEmpty());
}

void TestCliLibrary::aScanCounts()
{
    const QJsonObject document = m_run->library({"scan", "--json"}).document();
    const QJsonObject counts = document["counts"].toObject();
    QCOMPARE(document["command"].toString(), QString("scan"));
    QCOMPARE(counts["songs"].toInt(), 6);
    QCOMPARE(counts["not_songs"].toInt(), 1);
    QCOMPARE(counts["no_file"].toInt(), 1);
    QCOMPARE(counts["missing_files"].toInt(), 1);
    QCOMPARE(counts["undefined"].toInt(), 1);
    QCOMPARE(counts["missing"].toObject()["genre"].toInt(), 1);
    QVERIFY(!counts["missing"].toObject().contains("cover"));
    QCOMPARE(counts["formats"].toObject()["MPEG audio file"].toObject()["songs"].toInt(), 6);
    const QByteArray text = m_run->library({"scan"}).output;
    QVERIFY2(text.contains("\nmissing files                               1\n"), text);
    QVERIFY2(text.startsWith("songs                                       6         14:20"), text);
}

void TestCliLibrary::undefinedTracksAreListed()
{
    const CliRun::Answer answer = m_run->library({"undefined"});
    QVERIFY2(answer.output.endsWith("/m/e.mp3\n") && answer.output.contains("\ngenre "), answer.output);
    QCOMPARE(answer.errors, QByteArray("melodrift-cli: 1 of 6 songs is undefined\n"
                                       "melodrift-cli: 1 left out that are no songs\n"
                                       "melodrift-cli: 1 left out that have no file on this machine\n"));
}

void TestCliLibrary::groupsAreThoseOfTheWindow()
{
    const QJsonArray groups = m_run->library({"duplicates", "--json"}).document()["groups"].toArray();
    QCOMPARE(groups.size(), 1);
    QStringList names;
    for (const QJsonValue& song : groups[0].toObject()["songs"].toArray())
        names.append(song.toObject()["path"].toString().section('/', -1));
    QCOMPARE(names, QStringList({"a.mp3", "c.mp3", "d.mp3"})); // whatever the length of those that follow
    m_run->tracks()[0].artist = m_run->tracks()[3].artist = "Zo\xC3\xA9";
    m_run->tracks()[3].name = "HALO (Live)";
    m_run->tracks()[0].artist = "ZOE";
    m_run->write();
    const CliRun::Answer answer = m_run->library({"duplicates", "--by", "artist+title"});
    QVERIFY2(answer.output.startsWith("ZOE - Halo (2)\n"), answer.output);
}

void TestCliLibrary::eachFormOfOutputHasTheTracks()
{
    const QList<QJsonObject> lines = m_run->library({"duplicates", "--ndjson"}).lines();
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0]["type"].toString(), QString("song"));
    QCOMPARE(lines[0]["persistent_id"].toString().toLatin1(),
             Fixtures::itunesIdentifier(Fixtures::itunesTrack(0).persistentId));
    QCOMPARE(lines[0]["format"].toString(), QString("MPEG audio file"));
    QCOMPARE(lines[1]["bit_rate"].toInt(), 320000);
    QCOMPARE(lines[3]["counts"].toObject()["in_groups"].toInt(), 3);
}

void TestCliLibrary::aPlanIsShownAndNothingElse()
{
    const CliRun::Answer answer = m_run->library({"clean", "--keep", "best"});
    const QList<QByteArray> lines = answer.output.split('\n');
    QCOMPARE(lines.size(), 7);
    QCOMPARE(lines[0], QByteArray("Halo (3)"));
    QVERIFY2(lines[1].startsWith("  goes  MP3 ") && lines[3].startsWith("  goes  MP3 "), answer.output);
    QVERIFY2(lines[2].startsWith("  kept  MP3 ") && lines[2].endsWith("/m/c.mp3 (sounds best)"),
             answer.output);
    QCOMPARE(lines[5], QByteArray("2 tracks to be taken out, 2 files for the trash, 24 bytes"));
    QVERIFY2(answer.errors.startsWith("melodrift-cli: nothing was done; --yes does it\n"), answer.errors);
}

void TestCliLibrary::whatGoesComesBackByteForByte()
{
    const QByteArray before = m_run->content();
    const CliRun::Answer answer = m_run->library({"clean", "--keep", "best", "--yes", "-q", "--json"});
    QCOMPARE(answer.code, 0);
    const QJsonObject counts = answer.document()["counts"].toObject();
    QCOMPARE(counts["tracks_going"].toInt(), 2);
    QCOMPARE(counts["tracks_gone"].toInt(), 2);
    QCOMPARE(counts["gone"].toInt(), 2);
    QCOMPARE(counts["step"].toInt(), 1);
    QVERIFY(!m_run->files().contains("m/a.mp3") && !m_run->files().contains("m/d.mp3"));
    QCOMPARE(m_run->library({"scan", "--json"}).document()["counts"].toObject()["songs"].toInt(), 4);
    QVERIFY(!m_run->content().contains("<integer>" + QByteArray::number(m_run->tracks()[0].trackId) + '<'));

    const QJsonObject step = m_run->ask({"history", "--json"}).document()["steps"].toArray().at(0).toObject();
    const QJsonObject change = step["changes"].toArray().at(0).toObject();
    QCOMPARE(change["kind"].toString(), QString("taken-out"));
    QCOMPARE(change["tracks"].toInt(), 2);
    QVERIFY(step["what"].toString().startsWith("library Library.xml clean --keep best"));
    const CliRun::Answer undone = m_run->ask({"undo"});
    QCOMPARE(undone.code, 0);
    QCOMPARE(undone.errors, QByteArray("melodrift-cli: step 1: 3 files as before\n"));
    QVERIFY(m_run->content() == before);
    QCOMPARE(m_run->contentOf("m/d.mp3"), QByteArray("song m/d.mp3"));
}

void TestCliLibrary::whatIsDeletedForGoodLeavesTheTracksToUndo()
{
    const QByteArray before = m_run->content();
    const CliRun::Answer answer = m_run->library({"clean", "--keep", "first", "--yes", "--delete"});
    QCOMPARE(answer.code, 0);
    QVERIFY2(answer.errors.startsWith("melodrift-cli: 2 tracks taken out, 2 files deleted; "
                                      "melodrift-cli undo 1 brings the tracks back\n"),
             answer.errors);
    const CliRun::Answer undone = m_run->ask({"undo"});
    QCOMPARE(undone.code, 3);
    QCOMPARE(undone.errors.count("it was deleted for good"), 2);
    QVERIFY(m_run->content() == before);
}

void TestCliLibrary::aFileThatATrackLeftNeedsStays()
{
    m_run->tracks()[2].location = m_run->tracks()[0].location;
    m_run->add("m/link.mp3", "Another song", 50000, false);
    QVERIFY(QFile::link(m_run->path("m/d.mp3"), m_run->path("m/link.mp3")));
    m_run->write();
    const CliRun::Answer answer = m_run->library({"clean", "--keep", "first", "--yes"});
    QCOMPARE(answer.code, 0);
    QCOMPARE(answer.output.count("(the track alone: a song that is kept has the same file)"), 2);
    QVERIFY2(answer.errors.startsWith("melodrift-cli: 2 tracks taken out, 0 files moved"), answer.errors);
    QCOMPARE(m_run->contentOf("m/a.mp3"), QByteArray("song m/a.mp3"));
    QCOMPARE(m_run->contentOf("m/link.mp3"), QByteArray("song m/d.mp3"));
}

void TestCliLibrary::aFilmsFileStays()
{
    m_run->tracks()[6].location = m_run->tracks()[3].location;
    m_run->write();
    QCOMPARE(m_run->library({"clean", "--keep", "best", "--yes"}).code, 0);
    QCOMPARE(m_run->contentOf("m/d.mp3"), QByteArray("song m/d.mp3"));
    QVERIFY(!m_run->files().contains("m/a.mp3"));
}

void TestCliLibrary::aLinkLeadsToTheLibrary()
{
    QVERIFY(QFile::rename(m_run->path("Library.xml"), m_run->path("m/L\u00EDbrary.xml")));
    QVERIFY(QFile::link(m_run->path("m/L\u00EDbrary.xml"), m_run->path("Library.xml")));
    const QByteArray before = m_run->content();
    QCOMPARE(m_run->library({"clean", "--keep", "best", "--yes"}).code, 0);
    QVERIFY(QFileInfo(m_run->path("Library.xml")).isSymLink());
    QVERIFY(m_run->content() != before);
    QCOMPARE(m_run->ask({"undo"}).code, 0);
    QVERIFY(m_run->contentOf("m/L\u00EDbrary.xml") == before);
}

void TestCliLibrary::aLibraryThatChangedSinceStaysAsItIs()
{
    QCOMPARE(m_run->library({"clean", "--keep", "best", "--yes"}).code, 0);
    const QByteArray others = m_run->content().replace("Amber", "Ember");
    m_run->addFile("Library.xml", others);
    const CliRun::Answer undone = m_run->ask({"undo"});
    QCOMPARE(undone.code, 3);
    QVERIFY2(undone.errors.contains("Library.xml: another program changed it since"), undone.errors);
    QVERIFY(m_run->content() == others);
    QCOMPARE(m_run->contentOf("m/a.mp3"), QByteArray("song m/a.mp3"));
}

void TestCliLibrary::aLibraryInUseIsLeft()
{
    m_run->addFile("Library.xml.melodrift-journal", "not one of ours");
    const QMap<QString, QByteArray> before = m_run->files();
    const CliRun::Answer answer = m_run->library({"clean", "--keep", "best", "--yes"});
    QCOMPARE(answer.code, 3);
    QVERIFY2(answer.errors.contains("Library.xml: the file at the journal's name is no journal"),
             answer.errors);
    QCOMPARE(m_run->files(), before);
    QCOMPARE(m_run->ask({"history"}).errors, QByteArray("melodrift-cli: nothing was changed\n"));
}

void TestCliLibrary::problemsAreListed()
{
    const CliRun::Answer answer = m_run->library({"check"});
    QVERIFY2(answer.output.startsWith("missing     ") && answer.output.contains("\nno-file     "),
             answer.output);
    QCOMPARE(answer.errors, QByteArray("melodrift-cli: 2 problems, 8 tracks\n"));
    const QJsonArray problems = m_run->library({"check", "--json"}).document()["problems"].toArray();
    QCOMPARE(problems.size(), 2);
    QCOMPARE(problems[0].toObject()["problem"].toString(), QString("missing"));
    QCOMPARE(problems[0].toObject()["title"].toString(), QString("Gone"));
}

void TestCliLibrary::whatIsFoundIsTold_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::newRow("missing files") << QStringList({"scan", "--fail-on", "missing"}) << 1;
    QTest::newRow("nothing") << QStringList({"scan", "--fail-on", "title,album"}) << 0;
    QTest::newRow("a genre") << QStringList({"undefined", "--fail-on", "genre"}) << 1;
    QTest::newRow("groups") << QStringList({"duplicates", "--fail-on", "any"}) << 1;
    QTest::newRow("any problem") << QStringList({"check", "--fail-on", "any"}) << 1;
    QTest::newRow("no such problem") << QStringList({"check", "--fail-on", "shared,journal"}) << 0;
}

void TestCliLibrary::whatIsFoundIsTold()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QCOMPARE(m_run->library(arguments).code, code);
}

void TestCliLibrary::whatIsNoLibraryIsNamed_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("empty") << "empty.xml" << QByteArray("line 1");
    QTest::newRow("truncated") << "half.xml" << QByteArray("line ");
    QTest::newRow("hostile") << "deep.xml" << QByteArray("line 1");
    QTest::newRow("a folder") << "m" << QByteArray();
    QTest::newRow("a pipe") << "pipe" << QByteArray("it is no file");
    QTest::newRow("not there") << "nothing.xml" << QByteArray();
}

void TestCliLibrary::whatIsNoLibraryIsNamed()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, reason);
    m_run->addFile("empty.xml", "");
    m_run->addFile("half.xml", m_run->content().left(3000));
    m_run->addFile("deep.xml", "<plist><dict><key>Tracks</key>" + QByteArray("<dict>").repeated(1000000));
    QCOMPARE(::mkfifo(QFile::encodeName(m_run->path("pipe")).constData(), 0600), 0);
    for (const QStringList& command : {QStringList{"scan"},
                                       {"undefined"},
                                       {"duplicates"},
                                       {"check"},
                                       {"clean", "--keep", "first", "--yes"}}) {
        const CliRun::Answer answer = m_run->ask(QStringList{"library", name} + command);
        QCOMPARE(answer.code, 3);
        QVERIFY2(answer.errors.startsWith("melodrift-cli: " + name.toUtf8() + ": " + reason), answer.errors);
    }
}

void TestCliLibrary::callsThatMakeNoSenseEndWithTwo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("part");
    QTest::newRow("no file") << QStringList() << QByteArray("FILE");
    QTest::newRow("no command") << QStringList("Library.xml") << QByteArray("subcommand");
    QTest::newRow("no such command") << QStringList({"Library.xml", "burn"}) << QByteArray("burn");
    QTest::newRow("no rule") << QStringList({"Library.xml", "clean"}) << QByteArray("--keep");
    QTest::newRow("unknown rule") << QStringList({"Library.xml", "clean", "--keep", "odd"})
                                  << QByteArray("odd");
    QTest::newRow("unknown problem") << QStringList({"Library.xml", "check", "--fail-on", "odd"})
                                     << QByteArray("odd");
}

void TestCliLibrary::callsThatMakeNoSenseEndWithTwo()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, part);
    const CliRun::Answer answer = m_run->ask(QStringList{"library"} + arguments);
    QCOMPARE(answer.code, 2);
    QVERIFY2(answer.errors.contains(part), answer.errors);
}

void TestCliLibrary::textsOfTheLibraryControlNoTerminal()
{
    for (const int number : {0, 2, 3})
        m_run->tracks()[number].name = "Ha\xC2\x9Blo&#x9;x";
    m_run->write();
    for (const QStringList& command : {QStringList{"duplicates"}, {"undefined"}, {"check"}}) {
        const CliRun::Answer answer = m_run->library(command);
        QVERIFY(!answer.output.contains("\xC2\x9B") && !answer.output.contains('\t'));
    }
    QVERIFY(!m_run->library({"duplicates"}).output.isEmpty());
}

void TestCliLibrary::withoutAHistoryNothingIsChanged()
{
    QDir(m_run->path("home")).mkdir(".local");
    m_run->addFile("home/.local/state", "no folder");
    const QMap<QString, QByteArray> before = m_run->files();
    const CliRun::Answer answer = m_run->library({"clean", "--keep", "first", "--yes"});
    QCOMPARE(answer.code, 3);
    QVERIFY2(answer.errors.contains("the history cannot be written"), answer.errors);
    QCOMPARE(m_run->files(), before);
}

QTEST_GUILESS_MAIN(TestCliLibrary)
#include "tst_clilibrary.moc"
