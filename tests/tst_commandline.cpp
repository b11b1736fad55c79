// What the program answers to its command line, where there is no display.
#include "programrun.h"

#include <QtTest>

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void answersNeedNoDisplay_data();
    void answersNeedNoDisplay();
    void wrongOptionsEndWithTwo_data();
    void wrongOptionsEndWithTwo();
    void withoutAnyPathThatExistsNoWindowOpens();
    void missingPathsAreNamedAndLeftOut();
    void theLocalModeNeedsNoPath();
    void aSecondStartGoesItsOwnWay();
    void optionsOfTheToolkitAreNotOurs();

private:
    struct Answer
    {
        int code;
        QByteArray output;
        QByteArray errors;
        QStringList left;
    };
    static Answer ask(const QStringList& arguments);
};

TestCommandLine::Answer TestCommandLine::ask(const QStringList& arguments)
{
    ProgramRun run;
    for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        run.unset(display);
    run.startMelodrift(arguments);
    if (!run.process.waitForFinished(patience) || run.process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, run.process.readAllStandardError(), run.left()};
    return {run.process.exitCode(), run.process.readAllStandardOutput(), run.process.readAllStandardError(),
            run.left()};
}

void TestCommandLine::answersNeedNoDisplay_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("part");
    QTest::newRow("help") << QStringList("--help") << QByteArray("--itunes-library <file>");
    QTest::newRow("h") << QStringList("-h") << QByteArray("[paths...]");
    QTest::newRow("help-all") << QStringList("--help-all") << QByteArray("--version");
    QTest::newRow("version") << QStringList("--version") << QByteArray("Melodrift " MELODRIFT_VERSION "\n");
    QTest::newRow("v") << QStringList("-v") << QByteArray("Melodrift " MELODRIFT_VERSION "\n");
    QTest::newRow("with a path") << QStringList({"nowhere.mp3", "--version"}) << QByteArray("Melodrift");
}

void TestCommandLine::answersNeedNoDisplay()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, part);
    const Answer answer = ask(arguments);
    QVERIFY2(answer.code == 0, answer.errors);
    QVERIFY2(answer.output.contains(part), answer.output);
    QCOMPARE(answer.errors, QByteArray());
    QCOMPARE(answer.left, QStringList());
}

void TestCommandLine::wrongOptionsEndWithTwo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("part");
    QTest::newRow("unknown") << QStringList("--colour") << QByteArray("'colour'");
    QTest::newRow("unknown beside help") << QStringList({"--help", "--colour"}) << QByteArray("'colour'");
    QTest::newRow("no value") << QStringList("--itunes-library") << QByteArray("--itunes-library");
    QTest::newRow("empty value") << QStringList("--itunes-library=") << QByteArray("--itunes-library");
    QTest::newRow("value too much") << QStringList("--version=2") << QByteArray("--version");
}

void TestCommandLine::wrongOptionsEndWithTwo()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, part);
    const Answer answer = ask(arguments);
    QVERIFY2(answer.code == 2, answer.errors);
    QCOMPARE(answer.output, QByteArray());
    QVERIFY2(answer.errors.contains(part), answer.errors);
    QCOMPARE(answer.errors.count('\n'), 1);
    QCOMPARE(answer.left, QStringList());
}

void TestCommandLine::withoutAnyPathThatExistsNoWindowOpens()
{
    const Answer answer = ask({"nowhere.mp3", "", "two\nlines", "--", "-x"});
    QVERIFY2(answer.code == 2, answer.errors);
    QCOMPARE(answer.output, QByteArray());
    QCOMPARE(answer.errors, QByteArray("melodrift: no such file or folder: nowhere.mp3\n"
                                       "melodrift: no such file or folder: \n"
                                       "melodrift: no such file or folder: two?lines\n"
                                       "melodrift: no such file or folder: -x\n"));
    QCOMPARE(answer.left, QStringList());
}

void TestCommandLine::missingPathsAreNamedAndLeftOut()
{
    ProgramRun run;
    QVERIFY(QDir(run.path("")).mkdir("songs"));
    run.startMelodrift({"nowhere.mp3", "songs"});
    QVERIFY(run.process.waitForStarted(patience));
    run.process.setReadChannel(QProcess::StandardError);
    QTRY_VERIFY(run.process.canReadLine());
    QCOMPARE(run.process.readLine(), QByteArray("melodrift: no such file or folder: nowhere.mp3\n"));
    QTRY_VERIFY(!run.left().isEmpty()); // it goes on
    QCOMPARE(run.process.state(), QProcess::Running);
}

void TestCommandLine::theLocalModeNeedsNoPath()
{
    ProgramRun run;
    run.startMelodrift({"--local"});
    QVERIFY(run.process.waitForStarted(patience));
    QTRY_VERIFY(!run.left().isEmpty());
    QCOMPARE(run.process.state(), QProcess::Running);
    QCOMPARE(run.process.readAllStandardError(), QByteArray());
}

void TestCommandLine::aSecondStartGoesItsOwnWay()
{
    ProgramRun first;
    ProgramRun second;
    QVERIFY(QDir(first.path("")).mkdir("songs"));
    second.set("TMPDIR", first.temporary());
    first.startMelodrift({first.path("songs")});
    QTRY_COMPARE(first.left().size(), 1);
    second.startMelodrift({first.path("songs")});
    QTRY_COMPARE(first.left().size(), 2);
    QCOMPARE(first.process.state(), QProcess::Running);
    QCOMPARE(second.process.state(), QProcess::Running);
}

void TestCommandLine::optionsOfTheToolkitAreNotOurs()
{
    const Answer answer = ask({"-platform", "offscreen", "--style=Fusion", "nowhere.mp3"});
    QCOMPARE(answer.code, 2);
    QCOMPARE(answer.errors, QByteArray("melodrift: no such file or folder: nowhere.mp3\n"));
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
