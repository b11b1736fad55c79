#include "centerwidget.h"
#include "deletingmusicwaitingdlg.h"
#include "deletionfixture.h"
#include "dupmusicinfo.h"
#include "guidriver.h"
#include "interposed.h"
#include "qmusicinfo.h"

#include <QFileInfo>
#include <QPointer>
#include <QSemaphore>
#include <QThread>
#include <QtTest>

/// Clearing the group shown while the user waits, since its files take long.
class TestGroupWaiting : public DeletionFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init();
    void cleanup();

    void theWindowAnswersMeanwhile();
    void theListsAreLeftAloneMeanwhile();
    void allGroupsFollowTheOneShown();
    void theEndOfTheProgramEndsIt();

private:
    void holdFiles();
    DeletingMusicWaitingDlg* dialog() const
    {
        return qobject_cast<DeletingMusicWaitingDlg*>(QApplication::activeModalWidget());
    }

    QSemaphore m_mayGo; ///< once for each file
    std::unique_ptr<Interposed::Guard> m_guard;
};

void TestGroupWaiting::init()
{
    prepare();
    makeGroups(m_folder->path(), {4, 3});
    add(m_folder->path());
    m_guard = std::make_unique<Interposed::Guard>();
}

void TestGroupWaiting::cleanup()
{
    m_guard.reset();
    m_mayGo.tryAcquire(m_mayGo.available());
    clear();
}

/// No file goes before it may.
void TestGroupWaiting::holdFiles()
{
    Interposed::beforeMove = [this](const char* name) {
        if (QByteArray(name).endsWith(".mp3"))
            m_mayGo.acquire();
    };
}

void TestGroupWaiting::theWindowAnswersMeanwhile()
{
    holdFiles();
    openGroup(0);
    QVector<FootText> told;
    connect(m_center.get(), &CenterWidget::emitTold, this,
            [&told](const FootText& text) { told.append(text); });
    QStringList said;
    m_dialogs->expect([&](QWidget*) {
        QPointer<DeletingMusicWaitingDlg> waiting = dialog();
        QVERIFY(waiting);
        QTest::keyClick(waiting.data(), Qt::Key_Escape);
        QVERIFY(waiting->isVisible());
        QCOMPARE(rows().size(), 4); // what is shown stays until all of it is done
        said.append(waiting->text());
        m_mayGo.release();
        QTRY_COMPARE(filesIn(m_folder->path()).size(), 6);
        QTRY_VERIFY(waiting->text() != said.last());
        said.append(waiting->text());
        m_mayGo.release(2);
    });
    panel()->SlotDeleteSongWasSelected();
    QCOMPARE(said, QStringList({QStringLiteral("Deleting…"), QStringLiteral("Deleting… 1 of 3")}));
    QVERIFY(!dialog());
    QCOMPARE(filesIn(m_folder->path()),
             QStringList({"T000-00.mp3", "T001-00.mp3", "T001-01.mp3", "T001-02.mp3"}));
    QCOMPARE(allSongs().size(), 4);
    QCOMPARE(groups().size(), 1);
    QVERIFY(panel()->isHidden());
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.first().text, QString("3 songs moved to the trash."));
}

void TestGroupWaiting::theListsAreLeftAloneMeanwhile()
{
    openGroup(1);
    panel()->SlotDeleteSongWasSelected();
    openGroup(0);
    holdFiles();
    bool inUse = false;
    m_dialogs->expect([&](QWidget*) {
        inUse = m_center->ListsAreInUse();
        m_center->TakeDroppedPaths({m_folder->path()});
        m_center->SlotUndo();
        m_mayGo.release(3);
    });
    panel()->SlotDeleteSongWasSelected();
    QVERIFY(inUse);
    QVERIFY(!m_center->ListsAreInUse());
    QCOMPARE(allSongs().size(), 2);
    QCOMPARE(filesIn(m_folder->path()), QStringList({"T000-00.mp3", "T001-00.mp3"}));
}

void TestGroupWaiting::allGroupsFollowTheOneShown()
{
    holdFiles();
    openGroup(0);
    m_dialogs->expect([&](QWidget*) { m_mayGo.release(3); });
    m_dialogs->expect([&](QWidget*) { m_mayGo.release(2); });
    panel()->SlotOnBtnDeleteAllSong();
    QCOMPARE(filesIn(m_folder->path()), QStringList({"T000-00.mp3", "T001-00.mp3"}));
    QCOMPARE(allSongs().size(), 2);
    QVERIFY(groups().isEmpty());
}

/// What is gone by then has left the lists, and nothing else has. The other groups are not begun.
void TestGroupWaiting::theEndOfTheProgramEndsIt()
{
    Interposed::beforeMove = [](const char* name) {
        while (QByteArray(name).endsWith(".mp3") && !QThread::currentThread()->isInterruptionRequested())
            QThread::msleep(1); // nobody tells
    };
    openGroup(0);
    m_dialogs->expect([&](QWidget*) { dialog()->finish(); }); // as when the desktop ends its session
    panel()->SlotOnBtnDeleteAllSong();
    const QStringList left = {"T000-00.mp3", "T000-01.mp3", "T000-02.mp3",
                              "T001-00.mp3", "T001-01.mp3", "T001-02.mp3"};
    QCOMPARE(filesIn(m_folder->path()), left);
    QStringList songs;
    for (const QMusicInfo* song : allSongs())
        songs.append(QFileInfo(song->localInfo->filePath).fileName());
    songs.sort();
    QCOMPARE(songs, left);
    QCOMPARE(rows().size(), 3);
    QCOMPARE(groups().size(), 2);
}

QTEST_MAIN(TestGroupWaiting)
#include "tst_groupwaiting.moc"
