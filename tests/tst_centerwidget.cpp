#include "centerfixture.h"
#include "centerwidget.h"
#include "common/style.h"
#include "duplicatemusicdetailedwidget.h"
#include "guidriver.h"
#include "itunes/itunestrackrecord.h"
#include "musicdetailedinfowidget.h"
#include "qmusicinfo.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QtTest>

class TestCenterWidget : public CenterFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void startsWithEveryViewHidden();
    void displayAndKindChooseTheView();
    void viewsLookAsTheyShould();
    void aClickSelectsInBothViewsAndShowsTheSong_data() { bothDisplays(); }
    void aClickSelectsInBothViewsAndShowsTheSong();
    void aClickOnAGroupShowsItsSongs_data() { bothDisplays(); }
    void aClickOnAGroupShowsItsSongs();
    void aBanKeepsClicksFromSongsButNotFromGroups();
    void aDoubleClickPlays_data() { bothDisplays(); }
    void aDoubleClickPlays();
    void panelsAreHeard();
    void panelsHear();
    void iTunesSongsAreClassifiedInTheirOrder();
    void editsAreClassifiedAgain();
    void anEditKeepsThePlaceInTheList();
    void theOpenButtonLiesUnderTheView();
};

void TestCenterWidget::startsWithEveryViewHidden()
{
    const CenterWidget fresh;
    for (const char* name :
         {"m_allMusicListView", "m_allMusicTableView", "m_dupMusicListView", "m_dupMusicTableView"})
        QVERIFY(fresh.findChild<QWidget*>(name)->isHidden());
    QCOMPARE(fresh.findChild<QTableView*>("m_dupMusicTableView")->model()->columnCount(), 7);
    QVERIFY(fresh.findChild<QWidget*>("m_btnOpen")->isHidden());
    QVERIFY(fresh.findChild<QWidget*>("m_musicDetailedWidget")->isHidden());
    QVERIFY(!fresh.findChild<QWidget*>("m_btnGridDisplay")->isEnabled());
    QVERIFY(!fresh.acceptDrops());
}

void TestCenterWidget::displayAndKindChooseTheView()
{
    add({tone("a", "Same"), tone("b", "Same")});
    const auto shown = [this] {
        QStringList names;
        for (const QAbstractItemView* each : m_center->findChildren<QAbstractItemView*>())
            if (each->isVisible() && each->objectName().startsWith("m_"))
                names.append(each->objectName());
        return names;
    };
    auto* grid = m_center->findChild<QImageButton*>("m_btnGridDisplay");
    auto* table = m_center->findChild<QImageButton*>("m_btnTableDisplay");
    QCOMPARE(shown(), QStringList({"m_allMusicListView"}));
    m_center->slotShowDuplicateMusicView();
    QCOMPARE(shown(), QStringList({"m_dupMusicListView"}));
    QTest::mouseClick(table, Qt::LeftButton);
    QCOMPARE(shown(), QStringList({"m_dupMusicTableView"}));
    QVERIFY(!table->isEnabled() && grid->isEnabled());
    m_center->slotShowUndefineMusicView();
    QCOMPARE(shown(), QStringList({"m_allMusicTableView"}));
    QCOMPARE(view<QTableView>("m_allMusicTableView")->model()->rowCount(), 0);
    QCOMPARE(view<QTableView>("m_allMusicTableView")->columnWidth(0), 500);
    m_center->slotShowDuplicateMusicView();
    QTest::mouseClick(grid, Qt::LeftButton);
    QCOMPARE(shown(), QStringList({"m_dupMusicListView"}));
    m_center->slotShowAllmusicView();
    QCOMPARE(shown(), QStringList({"m_allMusicListView"}));
    QCOMPARE(view<QListView>("m_allMusicListView")->model()->rowCount(), 2);
    m_center->ShowWidget();
    QCOMPARE(shown(), QStringList({"m_allMusicListView"}));
}

void TestCenterWidget::viewsLookAsTheyShould()
{
    for (const char* name : {"m_allMusicListView", "m_dupMusicListView"}) {
        const auto* list = view<QListView>(name);
        QCOMPARE(list->viewMode(), QListView::IconMode);
        QCOMPARE(list->resizeMode(), QListView::Adjust);
        QCOMPARE(list->iconSize(), QSize(100, 120));
        QCOMPARE(list->gridSize(), QSize(120, 140));
        QCOMPARE(list->movement(), QListView::Snap);
        QCOMPARE(list->dragDropMode(), QAbstractItemView::DragDrop);
        QCOMPARE(list->focusPolicy(), Qt::NoFocus);
        QCOMPARE(list->frameShape(), QFrame::NoFrame);
        QVERIFY(list->uniformItemSizes()); // or a hundred thousand songs take seconds to lay out
        QCOMPARE(list->palette().color(QPalette::Text), QColor(0x28, 0x40, 0x4F));
        QCOMPARE(list->palette().color(QPalette::Disabled, QPalette::Text), QColor(0x28, 0x40, 0x4F));
    }
    QCOMPARE(view<QListView>("m_allMusicListView")->font().pointSize(), 9);
    QVERIFY(view<QListView>("m_allMusicListView")->itemDelegate()->inherits("CoverGridDelegate"));
    QVERIFY(view<QListView>("m_dupMusicListView")->itemDelegate()->inherits("PaintDupNumberDelegate"));
    for (const char* name : {"m_allMusicTableView", "m_dupMusicTableView"}) {
        const auto* table = view<QTableView>(name);
        QCOMPARE(table->frameShape(), QFrame::NoFrame);
        QVERIFY(!table->showGrid());
        QVERIFY(table->verticalHeader()->isHidden());
        QCOMPARE(table->verticalHeader()->defaultSectionSize(), 26);
        QCOMPARE(table->horizontalHeader()->defaultSectionSize(), 130);
        QVERIFY(table->horizontalHeader()->stretchLastSection());
        QVERIFY(!table->horizontalHeader()->highlightSections());
        QVERIFY(table->horizontalHeader()->styleSheet().contains("background:" + Style::header.name()));
        QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(table->palette().color(QPalette::Text), QColor(0x28, 0x40, 0x4F));
        QCOMPARE(table->palette().color(QPalette::Disabled, QPalette::Text), QColor(0x28, 0x40, 0x4F));
        QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
        QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(table->focusPolicy(), Qt::NoFocus);
    }
}

void TestCenterWidget::aClickSelectsInBothViewsAndShowsTheSong()
{
    QFETCH(bool, table);
    add({tone("a", "One"), tone("b", "Two")});
    display(table);
    auto* panel = m_center->findChild<MusicDetailedInfoWidget*>();
    clickRow(view<QAbstractItemView>(table ? "m_allMusicTableView" : "m_allMusicListView"), 1);
    QVERIFY(panel->isVisible());
    QCOMPARE(panel->findChild<QLabel*>("m_titleName")->text(), QString("Two"));
    QCOMPARE(view<QListView>("m_allMusicListView")->currentIndex().row(), 1);
    QCOMPARE(view<QTableView>("m_allMusicTableView")->currentIndex().row(), 1);
    m_center->SlotHiddenMusicDetailedWidget();
    QVERIFY(panel->isHidden());
}

void TestCenterWidget::aClickOnAGroupShowsItsSongs()
{
    QFETCH(bool, table);
    add({tone("a", "One"), tone("b", "Two"), tone("c", "One"), tone("d", "Two"), tone("e", "Two")});
    m_center->slotShowDuplicateMusicView();
    display(table);
    auto* panel = m_center->findChild<DuplicateMusicDetailedWidget*>();
    clickRow(view<QAbstractItemView>(table ? "m_dupMusicTableView" : "m_dupMusicListView"), 1);
    QVERIFY(panel->isVisible());
    QCOMPARE(panel->keptSongs().size(), 1);
    QCOMPARE(panel->keptSongs().first()->localInfo->title, QString("Two"));
    QCOMPARE(view<QListView>("m_dupMusicListView")->currentIndex().row(), 1);
    QCOMPARE(view<QTableView>("m_dupMusicTableView")->currentIndex().row(), 1);
    m_center->SlotHiddenMusicDetailedWidget();
    QVERIFY(panel->isHidden());
}

void TestCenterWidget::aBanKeepsClicksFromSongsButNotFromGroups()
{
    QSignalSpy bans(m_center.get(), SIGNAL(emitForbidClickNavigBtn(bool)));
    add({tone("a", "Same"), tone("b", "Same")});
    m_center->SlotForbidToClickView(true);
    QCOMPARE(bans.last(), QVariantList({true}));
    clickRow(view<QListView>("m_allMusicListView"), 1);
    QVERIFY(m_center->findChild<QWidget*>("m_musicDetailedWidget")->isHidden());
    QCOMPARE(view<QTableView>("m_allMusicTableView")->currentIndex().row(), -1);
    m_center->slotShowDuplicateMusicView();
    clickRow(view<QListView>("m_dupMusicListView"), 0);
    QVERIFY(m_center->findChild<QWidget*>("m_dupMusicDetailedWidget")->isVisible());
    QCOMPARE(view<QTableView>("m_dupMusicTableView")->currentIndex().row(), 0);
    m_center->SlotForbidToClickView(false);
    m_center->slotShowAllmusicView();
    clickRow(view<QListView>("m_allMusicListView"), 1);
    QVERIFY(m_center->findChild<QWidget*>("m_musicDetailedWidget")->isVisible());
    m_center->SlotForbidToClickView(true);
    clickRow(view<QListView>("m_allMusicListView"), 0); // the mark stays where the song is that shows
    for (const QAbstractItemView* list :
         m_center->findChildren<QAbstractItemView*>(QRegularExpression(QStringLiteral("^m_allMusic"))))
        QCOMPARE(list->currentIndex().row(), 1);
    m_center->SlotForbidToClickView(false);
}

void TestCenterWidget::aDoubleClickPlays()
{
    QFETCH(bool, table);
    QList<QMusicInfo*> played;
    connect(m_center.get(), &CenterWidget::emitStartToPlayMusic, this,
            [&played](QMusicInfo* song) { played.append(song); });
    add({tone("a", "Same"), tone("b", "Same"), tone("c", "Other")});
    display(table);
    clickRow(view<QAbstractItemView>(table ? "m_allMusicTableView" : "m_allMusicListView"), 2, true);
    QCOMPARE(played.size(), 1);
    QCOMPARE(played.last()->localInfo->title, QString("Other"));
    m_center->slotShowDuplicateMusicView();
    clickRow(view<QAbstractItemView>(table ? "m_dupMusicTableView" : "m_dupMusicListView"), 0, true);
    QCOMPARE(played.size(), 2);
    QVERIFY(played.last()->localInfo->filePath.endsWith("a.mp3"));
    m_center->SlotDoubleClickDupMusicIndex(QModelIndex());
    m_center->SlotDoubleClickAllMusicIndex(QModelIndex());
    QCOMPARE(played.size(), 2);
}

/// What the panels of one song and of one group say reaches the lists.
void TestCenterWidget::panelsAreHeard()
{
    add({tone("a", "Same"), tone("b", "Same"), tone("c", "Same"), tone("d", "More"), tone("e", "More")});
    auto* details = m_center->findChild<MusicDetailedInfoWidget*>();
    auto* group = m_center->findChild<DuplicateMusicDetailedWidget*>();
    QSignalSpy classified(m_center.get(), SIGNAL(emitUndefinedMusicCount(int)));
    emit details->emitMusicInfoHasChanged();
    QCOMPARE(classified.size(), 1);
    emit details->emitMusicCoverHasChanged();
    QCOMPARE(classified.size(), 2);
    QSignalSpy bans(m_center.get(), SIGNAL(emitForbidClickNavigBtn(bool)));
    emit details->emitForbidToClickView(true);
    QCOMPARE(bans, QList<QVariantList>({{true}}));
    emit details->emitForbidToClickView(false);
    QCOMPARE(bans.size(), 2);

    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    auto* model = view<QListView>("m_allMusicListView")->model();
    auto* last = static_cast<QMusicInfo*>(model->index(2, 0).internalPointer());
    emit group->emitDeleteDupMusicWasSelected(last);
    QCOMPARE(counts.last(), QVariantList({4, 0, 2}));
    QVERIFY(!QFile::exists(m_folder->filePath("c.mp3")));
    m_dialogs->expect([](QWidget*) {}); // the waiting dialog closes itself
    emit group->emitDeleteAllDupMusic();
    QCOMPARE(counts.last(), QVariantList({2, 0, 0}));
}

/// What the lists say reaches the panel of one group.
void TestCenterWidget::panelsHear()
{
    add({tone("a", "Same"), tone("b", "Same")});
    m_center->slotShowDuplicateMusicView();
    clickRow(view<QListView>("m_dupMusicListView"), 0);
    auto* group = m_center->findChild<DuplicateMusicDetailedWidget*>();
    const auto* clearAll = group->findChild<QWidget*>("m_btnClearAll");
    QVERIFY(clearAll->isVisible());
    emit m_center->emitDuplicateMusicCount(0);
    QVERIFY(clearAll->isHidden());
    const auto players = [] {
        int visible = 0;
        for (const QWidget* window : QApplication::topLevelWidgets())
            visible += window->inherits("PlaySongWidget") && window->isVisible() ? 1 : 0;
        return visible;
    };
    QCOMPARE(players(), 0);
    clickRow(view<QListView>("m_dupMusicListView"), 0, true);
    QCOMPARE(players(), 1);
}

void TestCenterWidget::iTunesSongsAreClassifiedInTheirOrder()
{
    m_center->SwitchToiTunesCleanModel();
    QSignalSpy undefined(m_center.get(), SIGNAL(emitUndefinedMusicCount(int)));
    QSignalSpy groups(m_center.get(), SIGNAL(emitDuplicateMusicCount(int)));
    iTunesTrackRecord records[3] = {};
    QList<QMusicInfo*> songs;
    for (iTunesTrackRecord& record : records) {
        record.name = "Hello";
        record.artist = record.album = record.genre = "x";
        record.duration = 120000;
        songs.append(new QMusicInfo);
        songs.last()->track = &record;
    }
    records[2].genre = nullptr;
    m_center->setMusicInfoList(&songs);
    QCOMPARE(undefined.last(), QVariantList({1}));
    QCOMPARE(groups.last(), QVariantList({1}));
    QCOMPARE(view<QListView>("m_allMusicListView")->model()->rowCount(), 3);
    QList<QMusicInfo*> none;
    m_center->setMusicInfoList(&none);
    QCOMPARE(groups.last(), QVariantList({0}));
    m_center->SwitchToLocalCleanModel();
    qDeleteAll(songs);
}

void TestCenterWidget::editsAreClassifiedAgain()
{
    add({tone("a", "One"), tone("b", "Two")});
    QSignalSpy undefined(m_center.get(), SIGNAL(emitUndefinedMusicCount(int)));
    QSignalSpy groups(m_center.get(), SIGNAL(emitDuplicateMusicCount(int)));
    auto* model = view<QListView>("m_allMusicListView")->model();
    static_cast<QMusicInfo*>(model->index(1, 0).internalPointer())->localInfo->title = "One";
    m_center->SlotMusicInfoHaveBeEdited();
    QCOMPARE(undefined.last(), QVariantList({0}));
    QCOMPARE(groups.last(), QVariantList({1}));
    static_cast<QMusicInfo*>(model->index(0, 0).internalPointer())->localInfo->genre.clear();
    m_center->slotShowUndefineMusicView();
    m_center->SlotMusicInfoHaveBeEdited();
    QCOMPARE(undefined.last(), QVariantList({1}));
    QCOMPARE(model->rowCount(), 1); // the undefined view follows
}

void TestCenterWidget::anEditKeepsThePlaceInTheList()
{
    QStringList paths = {tone("song", "Title")};
    for (int i = 1; i < 60; ++i) {
        paths.append(m_folder->filePath(QString("song%1.mp3").arg(i)));
        QVERIFY(QFile::copy(paths.first(), paths.last()));
    }
    add(paths);
    auto* list = view<QListView>("m_allMusicListView");
    list->verticalScrollBar()->setValue(600);
    clickRow(list, 25);
    auto* panel = m_center->findChild<MusicDetailedInfoWidget*>();
    panel->SlotOnBtnEdit();
    panel->findChild<QLineEdit*>("m_lineTitle")->setText("Edited");
    panel->SlotOnBtnApply();
    QCOMPARE(list->verticalScrollBar()->value(), 600);
    QCOMPARE(list->currentIndex().row(), 25);
    QCOMPARE(list->currentIndex().data().toString(), QStringLiteral("Edited"));
    QCOMPARE(view<QTableView>("m_allMusicTableView")->currentIndex().row(), 25);
}

void TestCenterWidget::theOpenButtonLiesUnderTheView()
{
    auto* open = m_center->findChild<QImageButton*>("m_btnOpen");
    m_center->grab();
    QCOMPARE(open->pos(), QPoint((920 - open->width() - 330) / 2, 585 - 250));
    QCOMPARE(m_center->childAt(open->geometry().center()), open);
    QVERIFY(open->focusPolicy() != Qt::NoFocus);
    add({tone("a", "One")});
    QVERIFY(open->isVisible());
    QVERIFY(m_center->childAt(open->geometry().center()) != open);
    QCOMPARE(open->focusPolicy(), Qt::NoFocus);
}

QTEST_MAIN(TestCenterWidget)
#include "tst_centerwidget.moc"
