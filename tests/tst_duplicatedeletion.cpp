#include "centerwidget.h"
#include "deletionfixture.h"
#include "dupmusicbarwidget.h"
#include "dupmusicinfo.h"
#include "fixtures.h"
#include "guidriver.h"
#include "interposed.h"
#include "qmusicinfo.h"
#include "songfixtures.h"
#include "startup.h"

#include <QHash>
#include <QListView>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <random>

class TestDuplicateDeletion : public DeletionFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void clearingOneGroupDeletesItsUncheckedSongs();
    void aKeptSongAfterADeletedOneLeavesTheGroup();
    void randomMarksDoWhatTheStepsSay_data();
    void randomMarksDoWhatTheStepsSay();
    void marksHoldOverRepeatedDeletions_data();
    void marksHoldOverRepeatedDeletions();
    void theGroupShownStaysSelected();
    void aGroupThatIsGoneLeavesItsPanel();
    void theSameFileTwiceStays();
    void aFileThatTookAnothersPlaceStays();
    void aKillLeavesEveryFileInItsPlaceOrInTheTrash();
};

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
    QVERIFY(panel()->findChild<QImageButton*>("m_btnClearAll")->isHidden()); // an empty panel offers nothing
    openGroup(0);
    QVERIFY(panel()->findChild<QImageButton*>("m_btnClearAll")->isVisible());
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

void TestDuplicateDeletion::aGroupThatIsGoneLeavesItsPanel()
{
    makeGroups(m_folder->path(), {3, 2});
    add(m_folder->path());
    openGroup(0);
    rows().at(1)->SlotOnBtnCheckBox(); // kept, as the first one is
    panel()->SlotDeleteSongWasSelected();
    QVERIFY(panel()->isVisible());
    for (const int left : {1, 0}) {
        openGroup(0);
        panel()->SlotDeleteSongWasSelected();
        QCOMPARE(groups().size(), left);
        QVERIFY(panel()->isHidden()); // the column says that nothing is selected
    }
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

/// Another process clears all groups and is killed at some moment.
void TestDuplicateDeletion::aKillLeavesEveryFileInItsPlaceOrInTheTrash()
{
    for (int round = 0; round < 12; ++round) {
        const QTemporaryDir folder;
        m_bin.empty();
        makeGroups(folder.path(), QList<int>({20, 30, 40, 2, 3, 5}));
        const QStringList before = filesIn(folder.path());
        QHash<QString, QByteArray> contents;
        for (const QString& file : before)
            contents.insert(file, Fixtures::readBytes(folder.filePath(file)));
        const int gone = 3 + 7 * round;
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("MELODRIFT_CLEARS_ALL_OF", folder.path());
        environment.insert("MELODRIFT_DIES_AFTER", QString::number(gone));
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), QStringList());
        QVERIFY(process.waitForFinished(patience));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);

        const QStringList after = filesIn(folder.path());
        QCOMPARE(after.size(), before.size() - gone);
        QCOMPARE(m_bin.files().size(), gone);
        QCOMPARE(m_bin.notes().size(), gone + 1); // and one for the file at hand
        for (const QString& file : m_bin.files()) {
            QVERIFY(m_bin.notes().contains(file + ".trashinfo"));
            QCOMPARE(Fixtures::readBytes(m_bin.path(file)), contents.value(file));
        }
        for (const QString& file : after)
            QCOMPARE(Fixtures::readBytes(folder.filePath(file)), contents.value(file));
        for (int group = 0; group < 6; ++group)
            QVERIFY(after.contains(QStringLiteral("T00%1-00.mp3").arg(group)));
        m_center->SwitchToLocalCleanModel();
        add(folder.path());
        QCOMPARE(allSongs().size(), after.size());
    }
}

/// What the killed process does: takes the folder in, clears all groups, and is killed when so many files are
/// gone.
static int clearAllOf(const QString& folder)
{
    static int left = qEnvironmentVariableIntValue("MELODRIFT_DIES_AFTER");
    Interposed::beforeMove = [](const char* name) {
        if (QByteArray(name).endsWith(".mp3") && left-- == 0)
            std::raise(SIGKILL);
    };
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
