// The walk in docs/cli.md, command by command, and what follows it.
#include "clirun.h"
#include "identifyserver.h"

#include <QRegularExpression>

namespace {
/// A command and what it writes.
struct Step
{
    QString command;
    QStringList output;
};

QList<Step> stepsOf(const QString& page)
{
    QList<Step> steps;
    bool isInWalk = false;
    for (const QString& line : page.split('\n')) {
        if (line.startsWith("## "))
            isInWalk = line.startsWith("## A walk") || line.startsWith("## Which songs are these?") ||
                       line.startsWith("## Copies with other tags");
        if (!isInWalk || !line.startsWith("    "))
            continue;
        const QString text = line.mid(4);
        if (text.startsWith("$ "))
            steps.append({text.mid(2), {}});
        else if (!steps.isEmpty())
            steps.last().output.append(text);
    }
    return steps;
}

/// Figures differ between encoders, and so does the room that they take.
QStringList shapeOf(const QStringList& lines)
{
    static const QRegularExpression figures(" +[0-9][0-9,.:]*( [kM]?B)?\\b");
    QStringList shape;
    for (QString line : lines)
        if (!line.isEmpty())
            shape.append(line.replace(figures, " #"));
    return shape;
}
} // namespace

class TestCliWalk : public QObject
{
    Q_OBJECT

private slots:
    void everyCommandSaysWhatThePageSays();
};

void TestCliWalk::everyCommandSaysWhatThePageSays()
{
    QFile page(QStringLiteral(MELODRIFT_ROOT "/docs/cli.md"));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QList<Step> steps = stepsOf(QString::fromUtf8(page.readAll()));
    QVERIFY(steps.size() > 10);
    const QString programs = QCoreApplication::applicationDirPath();
    const IdentifyServer server;
    server.putIntoEnvironment();
    const CliRun run;
    QCOMPARE(QProcess::execute(programs + "/make_collection", {run.path("mess")}), 0);
    for (const Step& step : steps) {
        ProgramRun shell;
        shell.set("PATH", programs + ':' + qEnvironmentVariable("PATH"));
        shell.set("LC_ALL", "C.UTF-8"); // the shell's names in one order
        run.prepare(shell);
        shell.process.setProcessChannelMode(QProcess::MergedChannels);
        shell.start("sh", {"-c", step.command});
        QVERIFY(shell.process.waitForFinished(patience));
        const QStringList output = QString::fromUtf8(shell.process.readAll()).split('\n');
        QVERIFY2(shapeOf(output) == shapeOf(step.output),
                 qPrintable("$ " + step.command + '\n' + output.join('\n')));
    }
    const QJsonObject counts = run.ask({"scan", "--json", "mess"}).document()["counts"].toObject();
    QCOMPARE(counts["undefined"].toInt(), 0);
    QCOMPARE(counts["failed"].toInt(), 0);
}

QTEST_GUILESS_MAIN(TestCliWalk)
#include "tst_cliwalk.moc"
