#include "centerwidget.h"
#include "common/screenplace.h"
#include "deletealldupmusicthread.h"
#include "deletingmusicwaitingdlg.h"
#include "deletionfixture.h"
#include "dupmusicinfo.h"
#include "filebytes.h"
#include "guidriver.h"
#include "mainwindow.h"
#include "qmusicinfo.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QListView>
#include <QMovie>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

/// Clearing all groups while the user waits.
class TestClearingAll : public DeletionFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void clearingAllKeepsTheFirstOfEveryGroup();
    void clearingAllTellsOnceOfItsFiles();
    void clearingAllCanBeRepeated();
    void whatFollowsTheWaitingDialogIsNotLost();
    void theWaitingDialogStaysUntilTheEnd();
    void theWaitingDialogLiesOverTheWindow();
    void theAnimationMoves();
    void theWindowAnswersMeanwhile();
    void noModeSwitchMeanwhile();
    void theEndOfTheProgramEndsADeletion();
    void theThreadWithoutGroupsEndsAtOnce();
};

void TestClearingAll::clearingAllKeepsTheFirstOfEveryGroup()
{
    makeGroups(m_folder->path(), {2, 3, 4, 5, 1});
    add(m_folder->path());
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    QSignalSpy groupCounts(m_center.get(), SIGNAL(emitDuplicateMusicCount(int)));
    QList<QMusicInfo*> firsts;
    for (const DupMusicInfo* group : groups())
        firsts.append(group->musicList.first());
    openGroup(2);
    groupCounts.clear();
    m_dialogs->expect([](QWidget*) {}); // the waiting dialog closes itself
    QTest::mouseClick(panel()->findChild<QImageButton*>("m_btnClearAll"), Qt::LeftButton);
    QCOMPARE(filesIn(m_folder->path()),
             QStringList({"T000-00.mp3", "T001-00.mp3", "T002-00.mp3", "T003-00.mp3", "T004-00.mp3"}));
    QVERIFY(groups().isEmpty());
    for (QMusicInfo* first : firsts)
        QVERIFY(allSongs().contains(first));
    QCOMPARE(counts.last(), QVariantList({5, 0, 0}));
    QCOMPARE(groupCounts.size(), 3); // of the group shown, song by song; none for the others
    QVERIFY(panel()->isHidden());
    QVERIFY(rows().isEmpty());
    QVERIFY(m_center->findChild<QListView*>("m_dupMusicListView")->isEnabled());
    QVERIFY(m_center->findChild<QTableView*>("m_dupMusicTableView")->isEnabled());
}

/// Those of the group shown and those of all others.
void TestClearingAll::clearingAllTellsOnceOfItsFiles()
{
    makeGroups(m_folder->path(), {3, 2, 4});
    add(m_folder->path());
    openGroup(1);
    QVector<FootText> told;
    connect(m_center.get(), &CenterWidget::emitTold, this,
            [&told](const FootText& text) { told.append(text); });
    Fixtures::saveBytes("new", m_folder->filePath("T002-01.mp3"));
    m_dialogs->expect([](QWidget*) {});
    QTest::mouseClick(panel()->findChild<QImageButton*>("m_btnClearAll"), Qt::LeftButton);
    QCOMPARE(told.size(), 1);
    QVERIFY(told.first().failed);
    QCOMPARE(
        told.first().text,
        QString("5 songs moved to the trash. 1 file could not be deleted: \"T002-01.mp3\" (it is not the "
                "file that was listed any more)."));
}

void TestClearingAll::clearingAllCanBeRepeated()
{
    for (int round = 0; round < 3; ++round) {
        makeGroups(m_folder->path(), {2, 2});
        add(m_folder->path());
        QVERIFY(!groups().isEmpty());
        m_dialogs->expect([](QWidget*) {});
        m_center->SlotDeleteAllDupMusic();
        QVERIFY(groups().isEmpty());
        QCOMPARE(filesIn(m_folder->path()), QStringList({"T000-00.mp3", "T001-00.mp3"}));
    }
}

/// Does something as soon as the waiting dialog has closed. The thread is still returning then: it waits for
/// the event in hand to go.
class NextAfterDeleting : public QObject
{
public:
    NextAfterDeleting(CenterWidget& center, std::function<void()> next)
        : m_center(center), m_next(std::move(next))
    {
        m_center.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() != QEvent::MetaCall)
            return false;
        m_center.removeEventFilter(this);
        static_cast<QObject&>(m_center).event(event);
        m_next();
        return true;
    }

private:
    CenterWidget& m_center;
    const std::function<void()> m_next;
};

void TestClearingAll::whatFollowsTheWaitingDialogIsNotLost()
{
    makeGroups(m_folder->path(), {2, 2});
    add(m_folder->path());
    const QTemporaryDir further;
    makeGroups(further.path(), {3});
    bool inUse = true;
    const NextAfterDeleting user(*m_center, [&] {
        inUse = m_center->ListsAreInUse();
        add(further.path());
    });
    m_center->SlotDeleteAllDupMusic();
    QVERIFY(!inUse);
    QCOMPARE(allSongs().size(), 2 + 3);
    QCOMPARE(m_center->ReturnDuplicateMusicCount(), 1);
}

void TestClearingAll::theWaitingDialogStaysUntilTheEnd()
{
    DeletingMusicWaitingDlg dialog;
    QVERIFY(dialog.windowFlags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(dialog.testAttribute(Qt::WA_TranslucentBackground));
    const auto* movie = dialog.findChild<QLabel*>("m_labMovie");
    QCOMPARE(movie->pos(), QPoint(dialog.width() / 2, dialog.height() / 2));
    QVERIFY(dialog.rect().contains(dialog.card()));
    QVERIFY(dialog.card().contains(movie->geometry()));
    QTimer::singleShot(0, &dialog, [&] {
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(dialog.isVisible());
        dialog.close();
        QVERIFY(dialog.isVisible());
        dialog.finish();
    });
    dialog.exec();
    QVERIFY(!dialog.isVisible());
}

void TestClearingAll::theWaitingDialogLiesOverTheWindow()
{
    DeletingMusicWaitingDlg dialog;
    const auto card = [&] { return dialog.card().translated(dialog.pos()); };
    m_center->resize(700, 500);
    m_center->move(20, 30);
    ScreenPlace::putOver(dialog, dialog.card(), *m_center);
    QVERIFY((card().center() - m_center->frameGeometry().center()).manhattanLength() <= 2);
    QCOMPARE(dialog.windowHandle()->transientParent(), m_center->windowHandle());
    // Over a window that hangs over the screen's edge it stays on the screen.
    const QRect screen = ScreenPlace::availableAt(QPoint(0, 0));
    m_center->move(screen.right() - 360, screen.bottom() - 260);
    ScreenPlace::putOver(dialog, dialog.card(), *m_center);
    QVERIFY(screen.contains(card()));
}

void TestClearingAll::theAnimationMoves()
{
    DeletingMusicWaitingDlg dialog;
    int frames = 0;
    connect(dialog.findChild<QLabel*>("m_labMovie")->movie(), &QMovie::frameChanged, this, [&] {
        if (++frames == 10)
            dialog.finish();
    });
    QTimer::singleShot(patience, &dialog, &DeletingMusicWaitingDlg::finish);
    dialog.exec();
    QCOMPARE(frames, 10);
    QCOMPARE(dialog.findChild<QLabel*>("m_labMovie")->movie()->state(), QMovie::NotRunning);
    const QImage before = dialog.grab().toImage();
    dialog.showProgress(3, 10);
    QVERIFY(dialog.grab().toImage() != before);
}

/// While thousands of files go, the window's thread answers.
void TestClearingAll::theWindowAnswersMeanwhile()
{
    addAGreatGroup(4000);
    QElapsedTimer sinceLast;
    qint64 longest = 0;
    int answers = 0;
    QTimer heart;
    connect(&heart, &QTimer::timeout, this, [&] {
        longest = qMax(longest, sinceLast.restart());
        ++answers;
    });
    heart.start(1);
    sinceLast.start();
    QElapsedTimer clock;
    clock.start();
    m_center->SlotDeleteAllDupMusic();
    qInfo("4000 links deleted in %lld ms; %d answers, the longest wait %lld ms", clock.elapsed(), answers,
          longest);
    QCOMPARE(filesIn(m_folder->path()).size(), 1);
    QVERIFY(answers > 3);
}

void TestClearingAll::noModeSwitchMeanwhile()
{
    addAGreatGroup(1000);
    MainWindow window;
    auto* center = window.findChild<CenterWidget*>();
    center->SwitchToLocalCleanModel();
    m_dialogs->expectButton("m_btnType");
    center->TakeDroppedPaths({m_folder->path()});
    bool switched = false;
    QTimer::singleShot(0, &window, [&] { // a switch that was begun just before
        QVERIFY(center->ListsAreInUse());
        QMetaObject::invokeMethod(&window, "SlotLocalBtnMovieStop");
        switched = !QIOrvoUtil::m_cleanMode;
        center->TakeDroppedPaths({m_folder->path()});
    });
    m_dialogs->expect([](QWidget*) {});
    center->SlotDeleteAllDupMusic();
    QVERIFY(!switched);
    QCOMPARE(filesIn(m_folder->path()).size(), 1);
    QCOMPARE(center->ReturnDuplicateMusicCount(), 0);
    QTRY_VERIFY(!QIOrvoUtil::m_cleanMode); // it is made up for
}

void TestClearingAll::theEndOfTheProgramEndsADeletion()
{
    addAGreatGroup(1000);
    QTimer::singleShot(0, this, [] { // as when the desktop ends its session
        static_cast<DeletingMusicWaitingDlg*>(QApplication::activeModalWidget())->finish();
    });
    m_center->SlotDeleteAllDupMusic();
    QVERIFY(m_center->ListsAreInUse());
    m_center.reset();
    QVERIFY(QFile::exists(m_folder->filePath("T000-00.mp3")));
    QVERIFY(filesIn(m_folder->path()).size() > 1);
}

void TestClearingAll::theThreadWithoutGroupsEndsAtOnce()
{
    QList<QMusicInfo*> songs;
    QList<DupMusicInfo*> groups;
    QList<IAudioTag*> tags;
    DeleteAllDupMusicThread thread;
    QSignalSpy done(&thread, SIGNAL(emitAllMusicInfo()));
    thread.GetDupMusicBeDelete(&songs, &groups, &songs, &tags);
    thread.start();
    QVERIFY(thread.wait(patience));
    QCOMPARE(done.size(), 1);
}

QTEST_MAIN(TestClearingAll)
#include "tst_clearingall.moc"
