// The program on a terminal: colours, and the question before files go.
#include "identifyserver.h"
#include "terminalrun.h"

class TestCliTerminal : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void headingsAreBoldWhereColoursAreLiked();
    void whatIsNoTextIsShownAsSuch();
    void aTypedYesDoesIt();
    void anotherAnswerDoesNothing();
    void aListOnTheInputIsNoAnswer();
    void whatIsIdentifiedIsWrittenAfterAYes();
    void whatChangesBeforeTheYesStays();
    void aWaitIsShownAndInterrupted();

private:
    std::unique_ptr<CliRun> m_run;
};

void TestCliTerminal::init()
{
    m_run = std::make_unique<CliRun>();
    m_run->addSong("a.mp3", CliRun::texts("Halo"));
    m_run->addSong("b.mp3", CliRun::texts("Halo"));
}

void TestCliTerminal::headingsAreBoldWhereColoursAreLiked()
{
    TerminalRun bold(*m_run, {"duplicates", "."});
    QVERIFY(bold.readTo().contains("\x1b[1mHalo (2)\x1b[0m\r\n"));
    QCOMPARE(bold.code(), 0);
    TerminalRun plain(*m_run, {"duplicates", "."}, {"1", "xterm"});
    const QByteArray text = plain.readTo();
    QVERIFY2(text.contains("Halo (2)\r\n") && !text.contains("\x1b[1m"), text);
}

void TestCliTerminal::whatIsNoTextIsShownAsSuch()
{
    const QByteArray odd = QFile::encodeName(m_run->path()) + "/odd\xFF\x1b.mp3";
    QCOMPARE(std::rename(QFile::encodeName(m_run->path("b.mp3")).constData(), odd.constData()), 0);
    TerminalRun run(*m_run, {"duplicates", "."});
    const QByteArray text = run.readTo();
    QCOMPARE(std::remove(odd.constData()), 0);
    QVERIFY2(text.contains("./odd\xEF\xBF\xBD?.mp3\r\n"), text);
}

void TestCliTerminal::aTypedYesDoesIt()
{
    TerminalRun run(*m_run, {"clean", "--keep", "first", "."});
    QVERIFY(run.readTo("1 file go: ").contains("1 file for the trash"));
    QVERIFY(QFile::exists(m_run->path("b.mp3")));
    run.type("yes\n");
    const QByteArray rest = run.readTo();
    QVERIFY2(rest.contains("1 file moved into the trash"), rest);
    QCOMPARE(run.code(), 0);
    QVERIFY(!QFile::exists(m_run->path("b.mp3")));
}

void TestCliTerminal::anotherAnswerDoesNothing()
{
    for (const char* answer : {"y\n", "\n", "yes please\n"}) {
        TerminalRun run(*m_run, {"clean", "--keep", "first", "."});
        run.readTo("go: ");
        run.type(answer);
        QVERIFY(run.readTo().contains("nothing was done"));
        QCOMPARE(run.code(), 0);
        QVERIFY(QFile::exists(m_run->path("b.mp3")));
    }
}

void TestCliTerminal::aListOnTheInputIsNoAnswer()
{
    TerminalRun run(*m_run, {"clean", "--keep", "first", "--files-from", "-"});
    run.type("a.mp3\nb.mp3\nyes\n\x04");
    QVERIFY(run.readTo().contains("nothing was done"));
    QVERIFY(QFile::exists(m_run->path("b.mp3")));
}

void TestCliTerminal::whatIsIdentifiedIsWrittenAfterAYes()
{
    const IdentifyServer server;
    server.putIntoEnvironment();
    for (const bool isWanted : {false, true}) {
        TerminalRun run(*m_run, {"identify", "--write", "a.mp3", "b.mp3"});
        const QByteArray plan = run.readTo("2 songs written: ");
        QVERIFY2(plan.contains("\x1b[1ma.mp3\x1b[0m (by its sound, 98 %)\r\n"), plan);
        QVERIFY2(plan.contains("  title     Halo \u2192 Midnight Ferry\r\n"), plan);
        QCOMPARE(AudioFile::read(m_run->path("a.mp3")).texts[TAG_TITLE], QString("Halo"));
        run.type(isWanted ? "yes\n" : "no\n");
        const QByteArray rest = run.readTo();
        QVERIFY2(rest.contains(isWanted ? "2 songs saved; melodrift-cli undo 1" : "nothing was done"), rest);
        QCOMPARE(run.code(), 0);
    }
    for (const char* name : {"a.mp3", "b.mp3"})
        QCOMPARE(AudioFile::read(m_run->path(name)).texts[TAG_TITLE], QString("Midnight Ferry"));
}

void TestCliTerminal::whatChangesBeforeTheYesStays()
{
    const IdentifyServer server;
    server.putIntoEnvironment();
    TerminalRun run(*m_run, {"identify", "--write", "a.mp3", "b.mp3"});
    run.readTo("2 songs written: ");
    QCOMPARE(AudioFile::write(m_run->path("a.mp3"), {{TAG_TITLE, "Mine"}}), 0);
    run.type("yes\n");
    const QByteArray rest = run.readTo();
    QVERIFY2(rest.contains("a.mp3: its tags were changed meanwhile") && rest.contains("1 song saved"), rest);
    QCOMPARE(run.code(), 3);
    QCOMPARE(AudioFile::read(m_run->path("a.mp3")).texts[TAG_TITLE], QString("Mine"));
    QCOMPARE(AudioFile::read(m_run->path("b.mp3")).texts[TAG_TITLE], QString("Midnight Ferry"));
}

void TestCliTerminal::aWaitIsShownAndInterrupted()
{
    IdentifyServer server;
    server.putIntoEnvironment();
    server.setManner(IdentifyServer::AcoustId, IdentifyServer::Manner::Silent);
    TerminalRun run(*m_run, {"identify", "--write", "a.mp3"});
    QVERIFY(run.readTo(" a minute").contains("0 of 1 songs, 0 a minute"));
    run.type("\x03");
    run.readTo();
    QCOMPARE(run.code(), 130);
}

QTEST_GUILESS_MAIN(TestCliTerminal)
#include "tst_cliterminal.moc"
