// How far a run is, for whoever looks on at a terminal.
#include "clilibrary.h"
#include "terminalrun.h"

#include <QRegularExpression>

class TestCliProgress : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void theRateAndTheTimeThatIsLeftAreShown();
    void ofAListThatComesAsItGoesTheRateIsShown();
    void aDeletionShowsHowFarItIs();
    void soDoesOneOfALibrary();
    void nobodyIsShownItUnasked_data();
    void nobodyIsShownItUnasked();
    void coloursAreForTheTerminalAlone();
    void moreIsSaidWhenThatIsWanted();

private:
    static constexpr int songs = 600; // of which more is told in JSON than a terminal holds unread
    static void changeWhatAPlanNamed(const QStringList& files);
    static QStringList manyWords() { return {"undefined", "--ndjson", "m"}; }

    CliRun m_run;
};

/// Names of one song that lacks all but its artist.
void TestCliProgress::initTestCase()
{
    const QByteArray song = QFile::encodeName(m_run.addSong("one.mp3", {{TAG_ARTIST, "A"}}));
    QDir(m_run.path()).mkdir("m");
    const QByteArray folder = QFile::encodeName(m_run.path("m/"));
    for (int i = 0; i < songs; ++i)
        QCOMPARE(::link(song.constData(), (folder + QByteArray::number(i) + ".mp3").constData()), 0);
}

void TestCliProgress::theRateAndTheTimeThatIsLeftAreShown()
{
    const QRegularExpression line("\r\x1b\\[K[\\d,]+ of 600 songs, [\\d,]+ a second, \\d+:\\d\\d left");
    const auto shown = [this] { return TerminalRun(m_run, manyWords()).readSlowly(); };
    QByteArray text = shown();
    // How many there are is counted meanwhile, which may take longer on a busy machine.
    for (int i = 0; i < 20 && !QString::fromUtf8(text).contains(line); ++i)
        text = shown();
    QVERIFY2(QString::fromUtf8(text).contains(line), text.right(600));
    // The next line is written in its place, and nothing of it stays.
    QVERIFY2(text.mid(text.lastIndexOf("a second")).contains("\r\x1b[K"), text.right(600));
}

void TestCliProgress::ofAListThatComesAsItGoesTheRateIsShown()
{
    TerminalRun run(m_run, {"scan", "--files-from", "-"}, {"", "xterm", 1});
    QByteArray text;
    for (int i = 0; i < songs && !text.contains(" songs, "); ++i) {
        run.type("m/" + QByteArray::number(i) + ".mp3\n");
        text += run.readFor(50);
    }
    QVERIFY2(QString::fromUtf8(text).contains(QRegularExpression("\\d+ songs, \\d+ a second")), text);
    QVERIFY2(!text.contains(" left") && !text.contains(" of "), text);
    run.type("\x04");
    run.readTo();
    QCOMPARE(run.code(), 0);
    QVERIFY2(run.elsewhere().startsWith("songs "), run.elsewhere());
}

void TestCliProgress::aDeletionShowsHowFarItIs()
{
    constexpr int copies = 300;
    const CliRun run;
    const QString folder = "m/" + QString(200, 'x'); // so that a terminal does not hold all of the plan
    const QString song = run.addSong(folder + "/one.mp3", CliRun::texts("Halo"));
    QStringList files;
    for (int i = 0; i < copies; ++i) {
        files.append(run.path(folder + "/" + QString::number(i) + ".mp3"));
        QVERIFY(QFile::copy(song, files.last()));
    }
    TerminalRun terminal(run, {"clean", "--keep", "in:m", "--yes", "m"});
    terminal.readTo("Halo"); // while the plan waits for its reader
    changeWhatAPlanNamed(files);
    const QByteArray text = terminal.readSlowly();
    QCOMPARE(terminal.code(), 3);
    QCOMPARE(QDir(run.path(folder)).entryList(QDir::Files).size(), copies + 1);
    const QByteArray deletion = text.mid(text.indexOf("300 files for the trash"));
    const QRegularExpression line("\\d+ of 300 songs, [\\d,]+ a second, \\d+:\\d\\d left");
    QVERIFY2(QString::fromUtf8(deletion).contains(line), deletion);
}

void TestCliProgress::soDoesOneOfALibrary()
{
    constexpr int copies = 300;
    CliLibrary run;
    const QString folder = "m/" + QString(200, 'x') + '/';
    run.add("m/one.mp3", "Halo", 200000);
    QStringList files;
    for (int i = 0; i < copies; ++i) {
        run.add(folder + QString::number(i) + ".mp3", "Halo", 200000);
        files.append(run.path(folder + QString::number(i) + ".mp3"));
    }
    run.write();
    TerminalRun terminal(run, {"library", "Library.xml", "clean", "--keep", "first", "--yes"});
    terminal.readTo("Halo");
    changeWhatAPlanNamed(files);
    const QByteArray text = terminal.readSlowly();
    QCOMPARE(terminal.code(), 3);
    QCOMPARE(QDir(run.path(folder)).entryList(QDir::Files).size(), copies);
    const QByteArray deletion = text.mid(text.indexOf("300 tracks to be taken out"));
    const QRegularExpression line("\\d+ of 300 songs, [\\d,]+ a second, \\d+:\\d\\d left");
    QVERIFY2(QString::fromUtf8(deletion).contains(line), deletion);
}

/// So that none of the files goes and much is told, for which the program waits.
void TestCliProgress::changeWhatAPlanNamed(const QStringList& files)
{
    for (const QString& name : files) {
        QFile file(name);
        QVERIFY(file.open(QIODevice::Append) && file.write("more") == 4);
    }
}

void TestCliProgress::nobodyIsShownItUnasked_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("terminal");
    QTest::addColumn<int>("elsewhere");
    QTest::newRow("who reads a file") << QStringList() << QByteArray("xterm") << 2;
    QTest::newRow("who wants it quiet") << QStringList("-q") << QByteArray("xterm") << -1;
    QTest::newRow("a terminal that only writes on") << QStringList() << QByteArray("dumb") << -1;
}

void TestCliProgress::nobodyIsShownItUnasked()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, terminal);
    QFETCH(int, elsewhere);
    TerminalRun run(m_run, manyWords() + options, {"", terminal, elsewhere});
    const QByteArray text = run.readSlowly() + run.elsewhere();
    QCOMPARE(text.count("\"path\":\"m/"), songs);
    QVERIFY2(!text.contains("a second") && !text.contains('\x1b'), text.left(600));
}

void TestCliProgress::coloursAreForTheTerminalAlone()
{
    TerminalRun run(m_run, {"undefined", "m"}, {"", "xterm", 1});
    run.readTo();
    const QByteArray text = run.elsewhere();
    QVERIFY2(text.startsWith("missing "), text.left(100));
    QVERIFY(!text.contains('\x1b'));
    TerminalRun dumb(m_run, {"undefined", "one.mp3"}, {"", "dumb", -1});
    QVERIFY(!dumb.readTo().contains('\x1b'));
}

void TestCliProgress::moreIsSaidWhenThatIsWanted()
{
    m_run.addFile("notes.txt", "text");
    const auto errors = [this](const QStringList& options) {
        return m_run.ask(QStringList{"undefined", "one.mp3", "notes.txt"} + options).errors;
    };
    QVERIFY(errors({"-v"}).contains("notes.txt: left out, no music by its name"));
    QVERIFY(!errors({}).contains("notes.txt"));
    QVERIFY(errors({}).contains("1 left out that are no music"));
    QCOMPARE(errors({"-q"}), QByteArray());
}

QTEST_GUILESS_MAIN(TestCliProgress)
#include "tst_cliprogress.moc"
