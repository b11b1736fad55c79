// Taking a deletion back on a thread, while the user waits.
#include "deletingmusicwaitingdlg.h"
#include "deletionfixture.h"

#include <QThread>

#include <atomic>

/// While it lives, the thread that takes a change back stops at the first file that does not come back, which
/// it logs: until it is let go, or is to end.
class HeldAtAFailure
{
public:
    HeldAtAFailure()
    {
        holds() = true;
        m_former = qInstallMessageHandler(hold);
    }
    ~HeldAtAFailure()
    {
        letGo();
        qInstallMessageHandler(m_former);
    }
    Q_DISABLE_COPY(HeldAtAFailure)

    static void letGo() { holds() = false; }

private:
    static std::atomic<bool>& holds()
    {
        static std::atomic<bool> held;
        return held;
    }
    static void hold(QtMsgType, const QMessageLogContext&, const QString& line)
    {
        constexpr unsigned long blinkMilliseconds = 1;
        while (line.contains("does not come back") && holds() &&
               !QThread::currentThread()->isInterruptionRequested())
            QThread::msleep(blinkMilliseconds);
    }

    QtMessageHandler m_former = nullptr;
};

class TestUndoingAll : public DeletionFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init()
    {
        m_bin.empty();
        prepare();
        deleteThreeOfFour();
    }
    void cleanup() { clear(); }

    void theWindowAnswersMeanwhile();
    void theListsAreInUseMeanwhile();
    void theEndOfTheProgramEndsIt();

private:
    void deleteThreeOfFour();
    static DeletingMusicWaitingDlg& waitingDialog()
    {
        return *static_cast<DeletingMusicWaitingDlg*>(QApplication::activeModalWidget());
    }

    const QString m_foreign = QStringLiteral("T000-02.mp3"); ///< stands where a file was
};

/// The last of them goes, and so comes back, first.
void TestUndoingAll::deleteThreeOfFour()
{
    makeGroups(m_folder->path(), {4});
    add(m_folder->path());
    m_dialogs->expect([](QWidget*) {}); // the waiting dialog closes itself
    m_center->SlotDeleteAllDupMusic();
    QCOMPARE(filesIn(m_folder->path()), QStringList("T000-00.mp3"));
    Fixtures::saveBytes("somebody's", m_folder->filePath(m_foreign));
}

void TestUndoingAll::theWindowAnswersMeanwhile()
{
    const HeldAtAFailure held;
    QString firstWords;
    m_dialogs->expect([&](QWidget*) {
        firstWords = waitingDialog().text();
        QTRY_COMPARE(waitingDialog().text(), QString("Taking back… 0 of 3")); // the event loop runs
        HeldAtAFailure::letGo();
    });
    m_center->SlotUndo();
    QCOMPARE(firstWords, QString("Taking back…"));
    QVERIFY(!m_center->ListsAreInUse());
    QCOMPARE(filesIn(m_folder->path()).size(), 4);
    QCOMPARE(Fixtures::readBytes(m_folder->filePath(m_foreign)), QByteArray("somebody's"));
    QCOMPARE(allSongs().size(), 3);
    QCOMPARE(m_center->ReturnDuplicateMusicCount(), 1);
}

/// Nothing is taken in, nor is a second change taken back.
void TestUndoingAll::theListsAreInUseMeanwhile()
{
    const HeldAtAFailure held;
    const QTemporaryDir further;
    makeGroups(further.path(), {3});
    bool inUse = false;
    m_dialogs->expect([&](QWidget*) {
        inUse = m_center->ListsAreInUse();
        m_center->TakeDroppedPaths({further.path()});
        m_center->SlotUndo();
        HeldAtAFailure::letGo();
    });
    m_center->SlotUndo();
    QVERIFY(inUse);
    QCOMPARE(allSongs().size(), 3);
}

/// What has not come back by then lies in the trash, and the lists are as the disk.
void TestUndoingAll::theEndOfTheProgramEndsIt()
{
    const HeldAtAFailure held;
    m_dialogs->expect([](QWidget*) { waitingDialog().finish(); }); // as when the desktop ends its session
    m_center->SlotUndo();
    QVERIFY(!m_center->ListsAreInUse());
    QCOMPARE(filesIn(m_folder->path()), QStringList({"T000-00.mp3", m_foreign, "T000-03.mp3"}));
    QCOMPARE(m_bin.files().size(), 2);
    QCOMPARE(allSongs().size(), 2);
}

QTEST_MAIN(TestUndoingAll)
#include "tst_undoingall.moc"
