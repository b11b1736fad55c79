// Runs that tidy a library and are killed.
#include "clilibrary.h"
#include "sanitized.h"

#include <QRandomGenerator>

#include <unistd.h>

class TestCliLibraryKill : public QObject
{
    Q_OBJECT

private slots:
    void aKillLosesNothing();

private:
    void everyFileIsThereOrInTheTrash() const;
    void runAndKill(const QStringList& arguments);
    void everythingComesBack();

    CliLibrary m_run;
    QMap<QString, QByteArray> m_before;
    QRandomGenerator m_random{3};
    int m_longest = 60000; ///< microseconds that a run may go on
    int m_inTheMiddle = 0;
};

/// Half of the runs end by themselves before, however fast the machine is: what they may take follows that.
void TestCliLibraryKill::runAndKill(const QStringList& arguments)
{
    ProgramRun run;
    m_run.prepare(run);
    run.start(CliRun::program(), arguments);
    QVERIFY(run.process.waitForStarted(patience));
    ::usleep(useconds_t(m_random.bounded(m_longest)));
    run.process.kill();
    run.process.waitForFinished(patience);
    const bool isKilled = run.process.exitStatus() == QProcess::CrashExit;
    m_inTheMiddle += isKilled;
    m_longest = isKilled ? qMin(m_longest * 5 / 4, 1000000) : qMax(m_longest * 4 / 5, 1000);
}

/// What lies there, under whatever name: after a kill the note of one name may be left.
void TestCliLibraryKill::everyFileIsThereOrInTheTrash() const
{
    const QMap<QString, QByteArray> now = m_run.files();
    const QDir trash(m_run.path("home/.local/share/Trash/files"));
    QSet<QByteArray> inTrash;
    for (const QString& name : trash.entryList(QDir::Files))
        inTrash.insert(m_run.contentOf("home/.local/share/Trash/files/" + name));
    int away = 0;
    for (auto file = m_before.begin(); file != m_before.end(); ++file) {
        if (file.key() == "Library.xml")
            continue;
        away += !now.contains(file.key());
        QVERIFY2(now.contains(file.key()) ? now[file.key()] == file.value() : inTrash.contains(file.value()),
                 qPrintable(file.key()));
    }
    QCOMPARE(trash.entryList(QDir::Files).size(), away);
}

/// Steps that were cut short, and that cutting short their taking back left, too.
void TestCliLibraryKill::everythingComesBack()
{
    for (CliRun::Answer answer = m_run.ask({"undo"}); answer.errors.contains(": step ");
         answer = m_run.ask({"undo"}))
        QVERIFY2(answer.code == 0, answer.errors);
    QVERIFY(m_run.content() == m_before["Library.xml"]);
    QCOMPARE(m_run.library({"check", "--fail-on", "any"}).output, QByteArray());
    everyFileIsThereOrInTheTrash();
    QVERIFY(QDir(m_run.path("home/.local/share/Trash/files")).isEmpty());
}

void TestCliLibraryKill::aKillLosesNothing()
{
    for (int i = 0; i < 150; ++i)
        m_run.add(QString("m/%1.mp3").arg(i), "Song " + QByteArray::number(i / 3), 100000 + quint64(i / 3));
    m_run.write();
    m_before = m_run.files();
    const int kills = sanitized ? 10 : 40;
    const QStringList clean = {"library", "Library.xml", "clean", "--keep", "first", "--yes"};
    for (int i = 0; i < kills; ++i) {
        runAndKill(clean);
        everyFileIsThereOrInTheTrash();
        if (i % 2 == 1)
            runAndKill({"undo"});
        everyFileIsThereOrInTheTrash();
        everythingComesBack();
        if (QTest::currentTestFailed())
            return;
    }
    qInfo("%d runs were killed", m_inTheMiddle);
    QVERIFY(m_inTheMiddle > kills / 4);
}

QTEST_GUILESS_MAIN(TestCliLibraryKill)
#include "tst_clilibrarykill.moc"
