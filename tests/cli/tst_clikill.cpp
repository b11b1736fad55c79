// The program ended at any moment while it changes files: by a kill, which it does not see, and by the
// signals of somebody who wants it to stop.
#include "filebytes.h"
#include "support/sanitized.h"
#include "tracedrun.h"

#include <QtTest>

namespace {
using Contents = QMap<QString, QByteArray>; // of files, by their names

Contents filesIn(const QString& folder)
{
    Contents contents;
    const QDir dir(folder);
    for (const QString& name : dir.entryList(QDir::Files | QDir::Hidden | QDir::System))
        contents.insert(name, Fixtures::readBytes(dir.filePath(name)));
    return contents;
}
} // namespace

class TestCliKill : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void aKillLosesNothing_data();
    void aKillLosesNothing();
    void whoIsInterruptedLeavesNothingHalfDone_data();
    void whoIsInterruptedLeavesNothingHalfDone();

private:
    static constexpr int songs = 8;

    void measure();
    void prepare();
    int moment(int number, int of) const;
    void everyFileIsOldOrNew();
    void theHistoryKnowsWhatChanged();
    void aSecondRunGoesOn();
    void everythingComesBack();
    void nothingIsLeftBeside();

    Contents music() const { return filesIn(m_run->path("m")); }
    Contents trash() const { return filesIn(m_run->path("home/.local/share/Trash/files")); }
    QList<QJsonObject> steps() const;

    Contents m_songs; ///< as they are made
    QByteArray m_cover;
    QStringList m_before; ///< what was done before the command
    QStringList m_command;
    std::unique_ptr<CliRun> m_run;
    Contents m_old;  ///< before the command
    Contents m_new;  ///< after it
    int m_first = 1; ///< call of the system after which something is changed
    int m_calls = 0; ///< all of them
};

/// Copies of three songs.
void TestCliKill::initTestCase()
{
    if (QFileInfo("/dev/shm").isWritable()) // where no disk is waited for
        qputenv("TMPDIR", "/dev/shm");
    m_cover = Fixtures::jpeg(40, 40, 2);
    const CliRun run;
    for (int i = 0; i < songs; ++i) {
        QHash<int, QString> texts = CliRun::texts("Song " + QString::number(i % 3));
        texts.insert(TAG_TRACK, QString::number(i + 1)); // so that no file is like another
        run.addSong(QString("m/%1.mp3").arg(i, 2, 10, QChar('0')), texts, "mp3", Fixtures::jpeg(40, 40, 1));
    }
    m_songs = filesIn(run.path("m"));
    m_run = std::make_unique<CliRun>();
    const TracedRun trial(*m_run, {"--version"});
    if (!trial.isTraced())
        QSKIP("the system lets nobody trace programs");
}

/// A collection as it is before the command.
void TestCliKill::prepare()
{
    m_run = std::make_unique<CliRun>();
    for (const char* folder : {"m", "tmp"})
        QDir(m_run->path()).mkdir(folder);
    for (auto song = m_songs.begin(); song != m_songs.end(); ++song)
        Fixtures::saveBytes(song.value(), m_run->path("m/" + song.key()));
    Fixtures::saveBytes(m_cover, m_run->path("cover.jpg"));
    if (!m_before.isEmpty())
        QCOMPARE(m_run->ask(m_before).code, 0);
}

/// What the command makes of the files when nobody disturbs it, and how many moments it has.
void TestCliKill::measure()
{
    QFETCH(QStringList, before);
    QFETCH(QStringList, command);
    m_before = before;
    m_command = command;
    prepare();
    m_old = music();
    const QFileInfo journal(m_run->path("home/.local/state/melodrift/journal"));
    const qint64 written = journal.size();
    TracedRun run(*m_run, m_command);
    m_first = 0;
    for (m_calls = 0; run.step(); ++m_calls)
        if (m_first == 0 && QFileInfo(journal.filePath()).size() != written)
            m_first = m_calls;
    QCOMPARE(run.ending().code, 0);
    m_first = qMax(1, m_first - 100); // what is taken back is written down afterwards
    m_new = music();
    QVERIFY(m_old != m_new);
}

/// One of so many that are spread over the run, from before the first change on.
int TestCliKill::moment(int number, int of) const
{
    return m_first + (m_calls - m_first) * number / of;
}

QList<QJsonObject> TestCliKill::steps() const
{
    QList<QJsonObject> steps;
    for (const QJsonValue& step : m_run->ask({"history", "--json"}).document()["steps"].toArray())
        steps.append(step.toObject());
    return steps;
}

/// Or lies whole in the trash.
void TestCliKill::everyFileIsOldOrNew()
{
    const Contents now = music();
    const QList<QByteArray> inTrash = trash().values();
    int moved = 0;
    for (auto song = m_songs.begin(); song != m_songs.end(); ++song) {
        const QString& name = song.key();
        if (now.contains(name)) {
            QVERIFY2(now[name] == m_old.value(name) || now[name] == m_new.value(name), qPrintable(name));
            continue;
        }
        QVERIFY2(!m_old.contains(name) || !m_new.contains(name), qPrintable(name));
        QVERIFY2(inTrash.contains(song.value()), qPrintable(name));
        ++moved;
    }
    QCOMPARE(inTrash.size(), moved);
}

void TestCliKill::theHistoryKnowsWhatChanged()
{
    QSet<QString> changed;
    for (const QJsonObject& step : steps())
        for (const QJsonValue& change : step["changes"].toArray())
            if (!change.toObject()["back"].toBool())
                changed.insert(QFileInfo(change.toObject()["path"].toString()).fileName());
    const Contents now = music();
    for (auto song = m_songs.begin(); song != m_songs.end(); ++song)
        if (now.value(song.key()) != song.value())
            QVERIFY2(changed.contains(song.key()), qPrintable(song.key()));
}

void TestCliKill::aSecondRunGoesOn()
{
    const CliRun::Answer answer = m_run->ask(m_command);
    // To take back what was taken back to its end is all that a second run cannot do.
    QVERIFY2(answer.code == 0 || answer.errors.contains("taken back already"), answer.errors);
    QCOMPARE(music(), m_new);
}

void TestCliKill::everythingComesBack()
{
    for (int i = 0; i < 4; ++i) {
        const CliRun::Answer answer = m_run->ask({"undo"});
        if (answer.errors.contains("nothing to take back"))
            break;
        QVERIFY2(answer.code == 0, answer.errors);
    }
    QCOMPARE(music(), m_songs);
    QCOMPARE(trash(), Contents());
}

/// What killed runs left is gone as well, but for a note in the trash that has no file.
void TestCliKill::nothingIsLeftBeside()
{
    QCOMPARE(filesIn(m_run->path("m")).keys(), m_songs.keys());
    QCOMPARE(filesIn(m_run->path("tmp")), Contents());
    QCOMPARE(filesIn(m_run->path("home/.local/state/melodrift")).keys(), QStringList({"journal", "lock"}));
    QVERIFY(filesIn(m_run->path("home/.local/share/Trash/info")).size() <= 1);
}

void TestCliKill::aKillLosesNothing_data()
{
    const QStringList clean{"clean", "--keep", "first", "--yes", "m"};
    const QStringList tag{"tag", "--title", "New", "--year", "1999"};
    QStringList all;
    for (const QString& name : m_songs.keys())
        all.append("m/" + name);
    const QStringList cover = QStringList{"tag", "--cover", "cover.jpg"} + all;
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QStringList>("command");
    QTest::newRow("clean") << QStringList() << clean;
    QTest::newRow("tag") << QStringList() << tag + all;
    QTest::newRow("tag a cover") << QStringList() << cover;
    QTest::newRow("undo of clean") << clean << QStringList{"undo", "1"};
    QTest::newRow("undo of a cover") << cover << QStringList{"undo", "1"};
}

void TestCliKill::aKillLosesNothing()
{
    measure();
    const int kills = sanitized ? 5 : 25;
    int inTheMiddle = 0;
    for (int i = 0; i < kills && !QTest::currentTestFailed(); ++i) {
        prepare();
        TracedRun run(*m_run, m_command);
        run.step(moment(i, kills));
        run.end(SIGKILL);
        const Contents left = music();
        inTheMiddle += left != m_old && left != m_new;
        everyFileIsOldOrNew();
        theHistoryKnowsWhatChanged();
        if (i % 2 == 0)
            aSecondRunGoesOn();
        everythingComesBack();
        nothingIsLeftBeside();
        if (QTest::currentTestFailed())
            qWarning("it was killed at call %d of %d", moment(i, kills), m_calls);
    }
    QVERIFY2(inTheMiddle > kills / 8, qPrintable(QString::number(inTheMiddle)));
}

void TestCliKill::whoIsInterruptedLeavesNothingHalfDone_data()
{
    aKillLosesNothing_data();
}

void TestCliKill::whoIsInterruptedLeavesNothingHalfDone()
{
    measure();
    const int interruptions = sanitized ? 3 : 12;
    const int endings[] = {SIGINT, SIGTERM, SIGHUP};
    int interrupted = 0;
    for (int i = 0; i < interruptions && !QTest::currentTestFailed(); ++i) {
        prepare();
        TracedRun run(*m_run, m_command);
        run.step(moment(i, interruptions));
        const int signal = endings[i % 3];
        const TracedRun::Ending ending = run.end(signal);
        if (ending.signal != 0) // before it began
            QVERIFY(ending.signal == signal && music() == m_old);
        else if (ending.code == 0) // when it was through
            QCOMPARE(music(), m_new);
        else
            QCOMPARE(ending.code, 130);
        interrupted += ending.code == 130;
        everyFileIsOldOrNew();
        theHistoryKnowsWhatChanged();
        for (const QJsonObject& step : steps())
            QVERIFY(step["ended"].toBool());
        aSecondRunGoesOn();
        everythingComesBack();
        nothingIsLeftBeside();
        if (QTest::currentTestFailed())
            qWarning("signal %d came at call %d of %d", signal, moment(i, interruptions), m_calls);
    }
    QVERIFY2(interrupted > interruptions / 8, qPrintable(QString::number(interrupted)));
}

QTEST_GUILESS_MAIN(TestCliKill)
#include "tst_clikill.moc"
