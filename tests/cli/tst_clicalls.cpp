// What the program answers to its command line.
#include "clirun.h"

class TestCliCalls : public QObject
{
    Q_OBJECT

private slots:
    void itsVersionIsOneLine();
    void itBringsNoWindowAndNoPlayer();
    void everyCommandHasHelpWithExamples_data();
    void everyCommandHasHelpWithExamples();
    void wrongCallsEndWithTwo_data();
    void wrongCallsEndWithTwo();
    void aCallThatMakesNoSenseChangesNothing();
    void aFileNamedLikeACommandIsAFile();
};

void TestCliCalls::itsVersionIsOneLine()
{
    const CliRun::Answer answer = CliRun().ask({"--version"});
    QCOMPARE(answer.code, 0);
    QVERIFY2(answer.output.startsWith("melodrift-cli 1."), answer.output);
    QCOMPARE(answer.output.count('\n'), 1);
    QCOMPARE(answer.errors, QByteArray());
}

void TestCliCalls::itBringsNoWindowAndNoPlayer()
{
#ifndef Q_OS_LINUX
    QSKIP("the system tells the libraries of a program otherwise");
#endif
    QProcess ldd;
    ldd.start("ldd", {CliRun::program()});
    QVERIFY(ldd.waitForFinished(patience));
    const QByteArray libraries = ldd.readAllStandardOutput();
    QVERIFY2(libraries.contains("libmelodrift-audiocore"), libraries);
    for (const char* none : {"Qt5Gui", "Qt5Widgets", "libmpv", "libav", "libcurl", "libX", "libxcb",
                             "melodrift-playback", "melodrift-identify", "melodrift-demux"})
        QVERIFY2(!libraries.contains(none), none);
}

void TestCliCalls::everyCommandHasHelpWithExamples_data()
{
    QTest::addColumn<QString>("command");
    for (const char* command :
         {"scan", "undefined", "duplicates", "clean", "show", "identify", "cover", "tag", "undo", "history"})
        QTest::newRow(command) << QString(command);
}

void TestCliCalls::everyCommandHasHelpWithExamples()
{
    QFETCH(QString, command);
    const CliRun run;
    QVERIFY(run.ask({"--help"}).output.contains("\n  " + command.toUtf8() + ' '));
    const CliRun::Answer answer = run.ask({command, "--help"});
    QCOMPARE(answer.code, 0);
    QVERIFY2(answer.output.contains("Examples:\n  melodrift-cli " + command.toUtf8()), answer.output);
    QCOMPARE(run.ask({command, "-h"}).output, answer.output);
}

void TestCliCalls::wrongCallsEndWithTwo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("part");
    const auto row = [](const QStringList& arguments, const char* part) {
        QTest::newRow(qPrintable(arguments.join(' '))) << arguments << QByteArray(part);
    };
    row({}, "no command");
    row({"wipe"}, "wipe");
    row({"scan", "--colour", "."}, "--colour");
    row({"scan"}, "PATH");
    row({"scan", ""}, "PATH");
    row({"show"}, "FILE");
    row({"scan", "--exclude", "[a", "."}, "--exclude: [a: ");
    row({"scan", "--exclude", "", "."}, "--exclude");
    row({"scan", "--json", "--ndjson", "."}, "--ndjson");
    row({"scan", "--fail-on", "rain", "."}, "rain");
    row({"undefined", "--fail-on", "cover", "."}, "cover");
    row({"duplicates", "--by", "smell", "."}, "smell");
    row({"duplicates", "--files-from"}, "--files-from");
    row({"identify"}, "PATH");
    row({"identify", "--yes", "a.mp3"}, "--write");
    row({"identify", "--fail-on", "rain", "a.mp3"}, "rain");
    row({"cover", "a.mp3"}, "--out");
    row({"cover", "--out", "x"}, "FILE");
    row({"cover", "a.mp3", "b.mp3", "--out", "x"}, "FILE");
    row({"tag", "a.mp3"}, "nothing to change");
    row({"tag", "--title", "x"}, "FILE");
    row({"tag", "--title", "", "a.mp3"}, "--title");
    row({"tag", "--title", "x", "--clear", "title", "a.mp3"}, "--clear: title");
    row({"tag", "--clear", "lyrics", "a.mp3"}, "lyrics");
    row({"tag", "--year", "MMXX", "a.mp3"}, "--year");
    row({"tag", "--track", "1/12", "a.mp3"}, "--track");
    row({"tag", "--cover", "nowhere.jpg", "a.mp3"}, "--cover: nowhere.jpg: No such file");
    row({"tag", "--cover", ".", "a.mp3"}, "--cover: .: it is no file");
    row({"tag", "--cover", "x.jpg", "--clear-cover", "a.mp3"}, "--cover");
    row({"tag", "--from-name", "{titel}", "a.mp3"}, "--from-name: {titel}: there is no field {titel}");
}

void TestCliCalls::wrongCallsEndWithTwo()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, part);
    const CliRun::Answer answer = CliRun().ask(arguments);
    QCOMPARE(answer.code, 2);
    QCOMPARE(answer.output, QByteArray());
    QVERIFY2(answer.errors.contains(part), answer.errors);
    QVERIFY2(answer.errors.startsWith("melodrift-cli: ") && answer.errors.count('\n') == 1, answer.errors);
}

void TestCliCalls::aCallThatMakesNoSenseChangesNothing()
{
    const CliRun run;
    const QString song = run.addSong("a.mp3", CliRun::texts("Halo"));
    run.addFile("no.jpg", "no picture");
    run.addFile("no.gif", Fixtures::gif({10, 10})); // which no player expects in a song
    QCOMPARE(run.ask({"tag", "--title", "x", "--cover", "no.jpg", "a.mp3"}).code, 2);
    QCOMPARE(run.ask({"tag", "--title", "x", "--cover", "no.gif", "a.mp3"}).code, 2);
    QCOMPARE(AudioFile::read(song).texts.value(TAG_TITLE), QString("Halo"));
}

void TestCliCalls::aFileNamedLikeACommandIsAFile()
{
    const CliRun run;
    run.addSong("tag.mp3", CliRun::texts("Halo"));
    QVERIFY(QFile::rename(run.path("tag.mp3"), run.path("tag")));
    const CliRun::Answer answer = run.ask({"show", "--json", "tag"});
    QCOMPARE(answer.code, 0);
    QCOMPARE(answer.document()["songs"].toArray().size(), 1);
    QCOMPARE(run.ask({"show", "--", "tag"}).code, 0);
}

QTEST_GUILESS_MAIN(TestCliCalls)
#include "tst_clicalls.moc"
