#include "support/sanitized.h"
#include "trashfixture.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QtTest>

#include <unistd.h>

/// Another process moves files into the trash and back, and is killed.
class TestTrashKill : public TrashFixture
{
    Q_OBJECT

private slots:
    void aKillLosesNoFile();

private:
    static constexpr int files = 20;

    void makeFiles();
    QByteArray outputOfKilledMover(int seed);
    void everyFileIsInOnePlace(const QByteArray& output);

    QRandomGenerator m_random{7};
    int m_moves = 0;
    int m_inTheMiddle = 0;
};

void TestTrashKill::makeFiles()
{
    prepare();
    for (int i = 0; i < files; ++i)
        write(QByteArray::number(i), QByteArray("music ") + QByteArray::number(i));
}

QByteArray TestTrashKill::outputOfKilledMover(int seed)
{
    QProcess mover;
    mover.start(QCoreApplication::applicationDirPath() + "/trash_mover",
                {QFile::decodeName(m_files), QString::number(files), QString::number(seed)});
    if (!mover.waitForReadyRead(patience))
        return QByteArray();
    ::usleep(useconds_t(m_random.bounded(5000)));
    mover.kill();
    mover.waitForFinished(patience);
    const QByteArray output = mover.readAllStandardOutput();
    return output.left(output.lastIndexOf('\n') + 1);
}

/// At its path, or in the trash with a note of where it was; as was answered, but for the move that was not
/// answered any more.
void TestTrashKill::everyFileIsInOnePlace(const QByteArray& output)
{
    QHash<QByteArray, bool> trashedLast;
    for (const QByteArray& line : output.split('\n')) {
        if (line.isEmpty())
            continue;
        QVERIFY2(line.startsWith("T ") || line.startsWith("R "), line.constData());
        trashedLast.insert(line.mid(2), line.startsWith("T "));
        ++m_moves;
    }
    QHash<QByteArray, QByteArray> inTheTrash; // by path
    for (const QString& name : trashed()) {
        const base::TrashedFile file = {{}, m_trash.toStdString(), name.toStdString(), {}};
        inTheTrash.insert(pathInNote(file), read(inTrash(file)));
    }
    QCOMPARE(inTheTrash.size(), trashed().size());
    int unanswered = 0;
    for (int i = 0; i < files; ++i) {
        const QByteArray name = QByteArray::number(i);
        const QByteArray here = read(at(name));
        const bool isTrashed = inTheTrash.contains(m_files + name);
        QCOMPARE(isTrashed ? inTheTrash.value(m_files + name) : here, "music " + name);
        QCOMPARE(here == "nothing", isTrashed);
        unanswered += isTrashed != trashedLast.value(name);
    }
    QVERIFY2(unanswered <= 1, qPrintable(QString::number(unanswered)));
    const int furtherNotes = notes().size() - trashed().size();
    QVERIFY2(furtherNotes == 0 || furtherNotes == 1, qPrintable(QString::number(furtherNotes)));
    m_inTheMiddle += unanswered + furtherNotes;
}

void TestTrashKill::aKillLosesNoFile()
{
    const int kills = sanitized ? 15 : 100;
    for (int i = 0; i < kills; ++i) {
        makeFiles();
        const QByteArray output = outputOfKilledMover(i);
        QVERIFY(!output.isEmpty());
        everyFileIsInOnePlace(output);
        if (QTest::currentTestFailed())
            return;
    }
    qInfo("%d answered moves; %d of %d kills came in the middle of one", m_moves, m_inTheMiddle, kills);
    QVERIFY(m_moves > kills);
}

QTEST_GUILESS_MAIN(TestTrashKill)
#include "tst_trashkill.moc"
