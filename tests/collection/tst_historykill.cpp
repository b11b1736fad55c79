#include "historyfixture.h"
#include "support/sanitized.h"

#include <QProcess>
#include <QRandomGenerator>

#include <unistd.h>

/// Another process cleans, edits and takes back, and is killed.
class TestHistoryKill : public HistoryFixture
{
    Q_OBJECT

private slots:
    void init();
    void aKillLosesNothingThatCouldBeTakenBack();

private:
    static constexpr int files = 40;

    std::string at(int file) const { return HistoryFixture::at(QString::number(file)); }
    bool runAndKill(int seed);
    void everyFileIsThereOrInTheHistory();
    void everythingComesBack();

    QRandomGenerator m_random{7};
    QVector<QByteArray> m_contents;
    int m_steps = 0;
    int m_inTheMiddle = 0;
};

void TestHistoryKill::init()
{
    prepare();
    m_contents.clear();
    for (int i = 0; i < files; ++i)
        m_contents.append(
            read(song(QString::number(i), "song " + QString::number(i), "picture " + QByteArray::number(i))));
}

/// Whether it had not ended by itself.
bool TestHistoryKill::runAndKill(int seed)
{
    QProcess changer;
    changer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    changer.start(QCoreApplication::applicationDirPath() + "/history_changer",
                  {QFile::decodeName(HistoryFixture::at(QString()).c_str()), QString::number(files),
                   QFile::decodeName(stateFolder().c_str()), QString::number(seed)});
    if (!changer.waitForReadyRead(patience))
        return false;
    ::usleep(useconds_t(m_random.bounded(20000)));
    changer.kill();
    changer.waitForFinished(patience);
    m_steps += changer.readAllStandardOutput().count('\n');
    return changer.exitStatus() == QProcess::CrashExit;
}

/// What is not at its path lies in the trash, under the name that the history has for it.
void TestHistoryKill::everyFileIsThereOrInTheHistory()
{
    QHash<QByteArray, QString> inTrash;
    for (const auto& step : steps()) {
        m_inTheMiddle += !step.second.isEnded;
        for (const auto& change : step.second.changes)
            if (change.second.kind == FileChange::Kind::Trashed && !change.second.isBack)
                inTrash.insert(QByteArray::fromStdString(change.second.path),
                               QString::fromStdString(change.second.nameInTrash));
    }
    QCOMPARE(m_reason, QString());
    int there = 0;
    for (int i = 0; i < files; ++i) {
        const bool isHere = FileState::of(at(i)).exists();
        there += isHere;
        const QString name = inTrash.value(QByteArray::fromStdString(at(i)));
        QVERIFY2(isHere || m_bin.files().contains(name), at(i).c_str());
    }
    QCOMPARE(there + m_bin.files().size(), files);
    QVERIFY(there >= files / 4);
}

void TestHistoryKill::everythingComesBack()
{
    for (StepReturn::Result result = takeBack(); result.step > 0; result = takeBack()) {
        QVERIFY2(failuresOf(result).isEmpty(), qPrintable(failuresOf(result).join('\n')));
        QVERIFY(result.isWhole);
    }
    for (int i = 0; i < files; ++i)
        QCOMPARE(read(at(i)), m_contents.at(i));
    QCOMPARE(m_bin.files(), QStringList());
}

void TestHistoryKill::aKillLosesNothingThatCouldBeTakenBack()
{
    const int kills = sanitized ? 12 : 60;
    for (int i = 0; i < kills; ++i) {
        QVERIFY(runAndKill(i));
        everyFileIsThereOrInTheHistory();
        if (i % 4 == 3 && !QTest::currentTestFailed())
            everythingComesBack();
        if (QTest::currentTestFailed())
            return;
    }
    qInfo("%d answered steps; %d looks found steps that a kill had ended", m_steps, m_inTheMiddle);
    QVERIFY(m_steps >= kills);
    QVERIFY(sanitized || m_inTheMiddle > kills / 4); // so few kills may all come between two steps
}

QTEST_GUILESS_MAIN(TestHistoryKill)
#include "tst_historykill.moc"
