#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "common/screenplace.h"
#include "deletealldupmusicthread.h"
#include "deletingmusicwaitingdlg.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "dupmusicinfo.h"
#include "fixtures.h"
#include "guidriver.h"
#include "mainwindow.h"
#include "qmusicinfo.h"
#include "songfixtures.h"
#include "startup.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QHash>
#include <QLabel>
#include <QListView>
#include <QMovie>
#include <QProcess>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>
#include <QWindow>

#include <functional>
#include <random>

namespace {
/// Groups of real files: every name "T-n.mp3" has the title "T".
void makeGroups(const QString& folder, const QList<int>& sizes)
{
    for (int group = 0; group < sizes.size(); ++group) {
        const QString title = QStringLiteral("T%1").arg(group, 3, 10, QLatin1Char('0'));
        const QString first = Fixtures::copyTone("mp3", folder, title + QLatin1String("-00"));
        AudioFile::write(first,
                         {{TAG_TITLE, title}, {TAG_ARTIST, "A"}, {TAG_ALBUM, "B"}, {TAG_GENRE, "Pop"}});
        for (int song = 1; song < sizes.at(group); ++song)
            QFile::copy(first,
                        QStringLiteral("%1/%2-%3.mp3").arg(folder, title).arg(song, 2, 10, QLatin1Char('0')));
    }
}

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}
} // namespace

class TestDuplicateDeletion : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        Startup::beforeApplication();
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void clearingOneGroupDeletesItsUncheckedSongs();
    void aKeptSongAfterADeletedOneLeavesTheGroup();
    void randomMarksDoWhatTheStepsSay_data();
    void randomMarksDoWhatTheStepsSay();
    void marksHoldOverRepeatedDeletions_data();
    void marksHoldOverRepeatedDeletions();
    void theGroupShownStaysSelected();
    void theSameFileTwiceStays();
    void aFileThatTookAnothersPlaceStays();
    void clearingAllKeepsTheFirstOfEveryGroup();
    void clearingAllCanBeRepeated();
    void whatFollowsTheWaitingDialogIsNotLost();
    void theWaitingDialogStaysUntilTheEnd();
    void theWaitingDialogLiesOverTheWindow();
    void theAnimationMoves();
    void theWindowAnswersMeanwhile();
    void noModeSwitchMeanwhile();
    void theEndOfTheProgramEndsADeletion();
    void theThreadWithoutGroupsEndsAtOnce();
    void aKillLeavesEveryFileWholeOrGone();

private:
    void add(const QString& folder);
    void addAGreatGroup(int count);
    void openGroup(int row);
    QList<QMusicInfo*> allSongs() const;
    QList<DupMusicInfo*> groups() const;
    DuplicateMusicDetailedWidget* panel() const
    {
        return m_center->findChild<DuplicateMusicDetailedWidget*>();
    }
    QList<DupMusicbarWidget*> rows() const { return panel()->findChildren<DupMusicbarWidget*>(); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<CenterWidget> m_center;
    std::unique_ptr<DialogDriver> m_dialogs;
};

void TestDuplicateDeletion::initTestCase()
{
    Startup::afterApplication();
}

void TestDuplicateDeletion::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_center = std::make_unique<CenterWidget>();
    m_dialogs = std::make_unique<DialogDriver>();
    m_center->resize(920, 585);
    m_center->show();
    m_center->SwitchToLocalCleanModel();
}

void TestDuplicateDeletion::cleanup()
{
    m_center.reset();
    m_dialogs.reset();
    QIOrvoUtil::m_cleanMode = false;
    m_local_add_or_ScanAgain = 0;
}

void TestDuplicateDeletion::add(const QString& folder)
{
    m_dialogs->expectButton("m_btnType");
    m_center->TakeDroppedPaths({folder});
    m_center->slotShowDuplicateMusicView();
}

QList<QMusicInfo*> TestDuplicateDeletion::allSongs() const
{
    m_center->slotShowAllmusicView();
    const auto* model = m_center->findChild<QListView*>("m_allMusicListView")->model();
    QList<QMusicInfo*> songs;
    for (int row = 0; row < model->rowCount(); ++row)
        songs.append(static_cast<QMusicInfo*>(model->index(row, 0).internalPointer()));
    m_center->slotShowDuplicateMusicView();
    return songs;
}

QList<DupMusicInfo*> TestDuplicateDeletion::groups() const
{
    const auto* model = m_center->findChild<QListView*>("m_dupMusicListView")->model();
    QList<DupMusicInfo*> found;
    for (int row = 0; row < model->rowCount(); ++row)
        found.append(static_cast<DupMusicInfo*>(model->index(row, 0).internalPointer()));
    return found;
}

void TestDuplicateDeletion::openGroup(int row)
{
    auto* view = m_center->findChild<QListView*>("m_dupMusicListView");
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier,
                      view->visualRect(view->model()->index(row, 0)).center());
}

void TestDuplicateDeletion::clearingOneGroupDeletesItsUncheckedSongs()
{
    makeGroups(m_folder->path(), {3, 2});
    add(m_folder->path());
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    QSignalSpy groupCounts(m_center.get(), SIGNAL(emitDuplicateMusicCount(int)));
    openGroup(0);
    QCOMPARE(rows().size(), 3);
    m_dialogs->expectButton("m_btnOK");
    QTest::mouseClick(panel()->findChild<QImageButton*>("m_btnClearOne"), Qt::LeftButton);
    QCOMPARE(filesIn(m_folder->path()), QStringList({"T000-00.mp3", "T001-00.mp3", "T001-01.mp3"}));
    QCOMPARE(allSongs().size(), 3);
    QCOMPARE(groups().size(), 1);
    QVERIFY(rows().isEmpty());
    QCOMPARE(counts.size(), 2); // one for each song
    QCOMPARE(counts.last(), QVariantList({3, 0, 1}));
    QCOMPARE(groupCounts.last(), QVariantList({1}));
    QVERIFY(panel()->findChild<QImageButton*>("m_btnClearAll")->isVisible());
    openGroup(0);
    panel()->SlotDeleteSongWasSelected();
    QCOMPARE(groupCounts.last(), QVariantList({0}));
    QVERIFY(panel()->findChild<QImageButton*>("m_btnClearAll")->isHidden());
}

void TestDuplicateDeletion::aKeptSongAfterADeletedOneLeavesTheGroup()
{
    makeGroups(m_folder->path(), {3});
    add(m_folder->path());
    openGroup(0);
    const QList<QMusicInfo*> abc = groups().first()->musicList;
    const DupMusicInfo* group = groups().first();
    rows().at(0)->SlotOnBtnCheckBox(); // to be deleted
    rows().at(1)->SlotOnBtnCheckBox(); // kept
    panel()->SlotDeleteSongWasSelected();
    QCOMPARE(group->musicList, QList<QMusicInfo*>({abc.at(0)})); // although that one is gone
    QVERIFY(groups().isEmpty());
    QCOMPARE(allSongs(), QList<QMusicInfo*>({abc.at(1)}));
    QCOMPARE(filesIn(m_folder->path()), QStringList({"T000-01.mp3"}));
}

void TestDuplicateDeletion::randomMarksDoWhatTheStepsSay_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 12; ++seed)
        QTest::addRow("seed %d", seed) << seed;
}

/// The lists and the disk after a deletion, compared with the steps written out.
void TestDuplicateDeletion::randomMarksDoWhatTheStepsSay()
{
    QFETCH(int, seed);
    std::mt19937 random{unsigned(seed)};
    const auto below = [&](int limit) { return int(random() % unsigned(limit)); };
    QList<int> sizes;
    for (int group = 0; group < 3; ++group)
        sizes.append(2 + below(4));
    makeGroups(m_folder->path(), sizes);
    add(m_folder->path());

    for (int deletion = 0; deletion < 4 && !groups().isEmpty(); ++deletion) {
        int current = below(groups().size());
        if (groups().at(current)->musicList.isEmpty())
            continue;
        openGroup(current);
        QVector<bool> kept;
        for (DupMusicbarWidget* row : rows()) {
            if (below(2) == 0)
                row->SlotOnBtnCheckBox();
            kept.append(row->isKept());
        }
        QList<QMusicInfo*> all = allSongs();
        QList<DupMusicInfo*> shown = groups();
        QList<QList<QMusicInfo*>> lists;
        for (const DupMusicInfo* group : shown)
            lists.append(group->musicList);
        QStringList files = filesIn(m_folder->path());
        QList<QMusicInfo*> own = lists.at(current); // stays readable when its group has left the list
        bool ownListed = true;
        for (int i = kept.size() - 1; i >= 0 && i < own.size(); --i) {
            if (kept.at(i))
                continue;
            QMusicInfo* song = own.at(i);
            if (all.contains(song))
                files.removeOne(QFileInfo(song->localInfo->filePath).fileName());
            all.removeOne(song);
            if (current < lists.size()) {
                QList<QMusicInfo*>& list = lists[current];
                if (!list.isEmpty())
                    list.removeLast();
                if (ownListed)
                    own = list;
                if (list.size() == 1) {
                    lists.removeAt(current);
                    ownListed = false;
                }
            }
        }
        panel()->SlotDeleteSongWasSelected();
        QCOMPARE(allSongs(), all);
        QCOMPARE(filesIn(m_folder->path()), files);
        QList<QList<QMusicInfo*>> after;
        for (const DupMusicInfo* group : groups())
            after.append(group->musicList);
        QCOMPARE(after, lists);
    }
}

void TestDuplicateDeletion::marksHoldOverRepeatedDeletions_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 12; ++seed)
        QTest::addRow("seed %d", seed) << seed;
}

/// Whoever presses the button again, without a look at the rows that came anew, loses no song that was
/// marked.
void TestDuplicateDeletion::marksHoldOverRepeatedDeletions()
{
    QFETCH(int, seed);
    std::mt19937 random{unsigned(seed)};
    makeGroups(m_folder->path(), {6});
    add(m_folder->path());
    openGroup(0);
    QStringList kept;
    for (DupMusicbarWidget* row : rows()) {
        if (random() % 2 == 0)
            row->SlotOnBtnCheckBox();
        if (row->isKept())
            kept.append(row->song()->localInfo->filePath);
    }
    for (int deletion = 0; deletion < 3; ++deletion) {
        panel()->SlotDeleteSongWasSelected();
        for (const QString& path : qAsConst(kept))
            QVERIFY2(QFile::exists(path), qPrintable(path));
        for (const DupMusicbarWidget* row : rows())
            QVERIFY(row->isKept() || !kept.contains(row->song()->localInfo->filePath));
    }
}

void TestDuplicateDeletion::theGroupShownStaysSelected()
{
    makeGroups(m_folder->path(), {2, 4, 2});
    add(m_folder->path());
    openGroup(1);
    rows().at(1)->SlotOnBtnCheckBox();
    panel()->SlotDeleteSongWasSelected();
    QCOMPARE(rows().size(), 2);
    for (const char* name : {"m_dupMusicListView", "m_dupMusicTableView"})
        QCOMPARE(m_center->findChild<QAbstractItemView*>(name)->currentIndex().row(), 1);
    openGroup(2);
    panel()->SlotDeleteSongWasSelected(); // the last group leaves the list, and no other is shown instead
    QVERIFY(!m_center->findChild<QListView*>("m_dupMusicListView")->currentIndex().isValid());
}

void TestDuplicateDeletion::theSameFileTwiceStays()
{
    makeGroups(m_folder->path(), {1});
    const QString path = m_folder->filePath("T000-00.mp3");
    m_dialogs->expectButton("m_btnType");
    m_center->TakeDroppedPaths({path, path});
    m_center->slotShowDuplicateMusicView();
    QCOMPARE(groups().size(), 1);
    openGroup(0);
    panel()->SlotDeleteSongWasSelected();
    QVERIFY(QFile::exists(path));
    QCOMPARE(allSongs().size(), 1);
    m_dialogs->expectButton("m_btnType");
    m_center->TakeDroppedPaths({path});
    m_center->SlotDeleteAllDupMusic();
    QVERIFY(QFile::exists(path));
    QCOMPARE(allSongs().size(), 1);
}

void TestDuplicateDeletion::aFileThatTookAnothersPlaceStays()
{
    makeGroups(m_folder->path(), {3, 3});
    add(m_folder->path());
    openGroup(0);
    Fixtures::saveBytes("new", m_folder->filePath("T000-02.mp3"));
    Fixtures::saveBytes("new", m_folder->filePath("T001-01.mp3"));
    m_dialogs->expect([](QWidget*) {}); // the waiting dialog closes itself
    QTest::mouseClick(panel()->findChild<QImageButton*>("m_btnClearAll"), Qt::LeftButton);
    QCOMPARE(filesIn(m_folder->path()),
             QStringList({"T000-00.mp3", "T000-02.mp3", "T001-00.mp3", "T001-01.mp3"}));
    QCOMPARE(allSongs().size(), 2); // the lists do not tell of it
    QVERIFY(groups().isEmpty());
}

void TestDuplicateDeletion::clearingAllKeepsTheFirstOfEveryGroup()
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

void TestDuplicateDeletion::clearingAllCanBeRepeated()
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

void TestDuplicateDeletion::whatFollowsTheWaitingDialogIsNotLost()
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

void TestDuplicateDeletion::theWaitingDialogStaysUntilTheEnd()
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

void TestDuplicateDeletion::theWaitingDialogLiesOverTheWindow()
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

void TestDuplicateDeletion::theAnimationMoves()
{
    DeletingMusicWaitingDlg dialog;
    int frames = 0;
    connect(dialog.findChild<QLabel*>("m_labMovie")->movie(), &QMovie::frameChanged, this, [&] {
        if (++frames == 10)
            dialog.finish();
    });
    QTimer::singleShot(10000, &dialog, &DeletingMusicWaitingDlg::finish);
    dialog.exec();
    QCOMPARE(frames, 10);
    QCOMPARE(dialog.findChild<QLabel*>("m_labMovie")->movie()->state(), QMovie::NotRunning);
    const QImage before = dialog.grab().toImage();
    dialog.showProgress(3, 10);
    QVERIFY(dialog.grab().toImage() != before);
}

/// One group of a file and so many links to it.
void TestDuplicateDeletion::addAGreatGroup(int count)
{
    makeGroups(m_folder->path(), {1});
    const QString first = m_folder->filePath("T000-00.mp3");
    for (int i = 0; i < count; ++i)
        QFile::link(first, m_folder->filePath(QString("link%1.mp3").arg(i, 4, 10, QLatin1Char('0'))));
    add(m_folder->path());
}

/// While thousands of files go, the window's thread answers.
void TestDuplicateDeletion::theWindowAnswersMeanwhile()
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

void TestDuplicateDeletion::noModeSwitchMeanwhile()
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

void TestDuplicateDeletion::theEndOfTheProgramEndsADeletion()
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

void TestDuplicateDeletion::theThreadWithoutGroupsEndsAtOnce()
{
    QList<QMusicInfo*> songs;
    QList<DupMusicInfo*> groups;
    QList<IAudioTag*> tags;
    DeleteAllDupMusicThread thread;
    QSignalSpy done(&thread, SIGNAL(emitAllMusicInfo()));
    thread.GetDupMusicBeDelete(&songs, &groups, &songs, &tags);
    thread.start();
    QVERIFY(thread.wait(20000));
    QCOMPARE(done.size(), 1);
}

/// Another process clears all groups and is killed at some moment.
void TestDuplicateDeletion::aKillLeavesEveryFileWholeOrGone()
{
    int killedInTheMiddle = 0;
    for (int round = 0; round < 12; ++round) {
        const QTemporaryDir folder;
        makeGroups(folder.path(), QList<int>({20, 30, 40, 2, 3, 5}));
        const QStringList before = filesIn(folder.path());
        QHash<QString, QByteArray> contents;
        for (const QString& file : before)
            contents.insert(file, Fixtures::readBytes(folder.filePath(file)));
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("MELODRIFT_CLEARS_ALL_OF", folder.path());
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), QStringList());
        // Kills it when so many files are gone.
        const int enough = before.size() - 3 - 7 * round;
        QElapsedTimer clock;
        clock.start();
        while (filesIn(folder.path()).size() > enough && clock.elapsed() < 30000 &&
               process.state() != QProcess::NotRunning)
            process.waitForFinished(1);
        process.kill();
        process.waitForFinished();

        const QStringList after = filesIn(folder.path());
        killedInTheMiddle += after.size() > 6 && after.size() < before.size() ? 1 : 0;
        for (const QString& file : after)
            QCOMPARE(Fixtures::readBytes(folder.filePath(file)), contents.value(file));
        for (int group = 0; group < 6; ++group)
            QVERIFY(after.contains(QStringLiteral("T00%1-00.mp3").arg(group)));
        m_center->SwitchToLocalCleanModel();
        add(folder.path());
        QCOMPARE(allSongs().size(), after.size());
    }
    qInfo("%d of 12 kills in the middle of a deletion", killedInTheMiddle);
    QVERIFY(killedInTheMiddle > 0);
}

/// What the killed process does: takes the folder in and clears all groups.
static int clearAllOf(const QString& folder)
{
    Startup::afterApplication();
    CenterWidget center;
    DialogDriver dialogs;
    center.SwitchToLocalCleanModel();
    dialogs.expectButton("m_btnType");
    center.TakeDroppedPaths({folder});
    dialogs.expect([](QWidget*) {});
    center.SlotDeleteAllDupMusic();
    return 0;
}

int main(int argc, char** argv)
{
    TestDuplicateDeletion::initMain();
    QApplication::setAttribute(Qt::AA_Use96Dpi);
    QApplication application(argc, argv);
    const QString folder = qEnvironmentVariable("MELODRIFT_CLEARS_ALL_OF");
    if (!folder.isEmpty())
        return clearAllOf(folder);
    TestDuplicateDeletion test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_duplicatedeletion.moc"
