#include "duplicatemusicdetailedwidget.h"
#include "dupmusicinfo.h"
#include "findingfixture.h"
#include "qmusicinfo.h"

#include <QListView>

class TestSorting : public FindingFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void threeClicksGoRound();
    void theGridShowsTheSameOrder();
    void whatIsMarkedStaysMarked();
    void editsMoveTheirSong();
    void foundSongsKeepTheOrder();
    void groupsHaveAnOrderOfTheirOwn();
    void aSortedGroupIsTheTrueOne();
    void theArrowStandsBehindItsCaption();
};

void TestSorting::threeClicksGoRound()
{
    add({tone("a", "Part 10"), tone("b", "air"), tone("c", "Part 2"), tone("d", "Bee")});
    m_center->OnBtnTableView();
    const char* table = "m_allMusicTableView";
    const QStringList own = rows(table);
    clickHeader(table, 0);
    QCOMPARE(rows(table), QStringList({"air", "Bee", "Part 2", "Part 10"}));
    clickHeader(table, 0);
    QCOMPARE(rows(table), QStringList({"Part 10", "Part 2", "Bee", "air"}));
    clickHeader(table, 0);
    QCOMPARE(rows(table), own);
    clickHeader(table, 0);
    clickHeader(table, 1); // of one artist: they stay as they are
    QCOMPARE(rows(table), own);
    m_center->slotShowUndefineMusicView();
    m_center->slotShowAllmusicView();
    QCOMPARE(rows(table), own);
}

void TestSorting::theGridShowsTheSameOrder()
{
    add({tone("a", "b"), tone("b", "a")});
    m_center->OnBtnTableView();
    clickHeader("m_allMusicTableView", 0);
    m_center->OnBtnGridView();
    QCOMPARE(rows("m_allMusicListView"), QStringList({"a", "b"}));
    clickRow(view<QListView>("m_allMusicListView"), 0);
    QCOMPARE(m_center->findChild<QLabel*>("m_titleName")->text(), QString("a"));
}

void TestSorting::whatIsMarkedStaysMarked()
{
    add({tone("a", "c"), tone("b", "a"), tone("c", "b")});
    m_center->OnBtnTableView();
    auto* table = view<QTableView>("m_allMusicTableView");
    clickRow(table, 2);
    clickHeader("m_allMusicTableView", 0);
    QCOMPARE(table->currentIndex().row(), 1);
    QCOMPARE(table->currentIndex().data().toString(), QString("b"));
    QCOMPARE(view<QListView>("m_allMusicListView")->currentIndex().row(), 1);
}

void TestSorting::editsMoveTheirSong()
{
    add({tone("a", "a"), tone("b", "b")});
    m_center->OnBtnTableView();
    clickHeader("m_allMusicTableView", 0);
    clickHeader("m_allMusicTableView", 0);
    QCOMPARE(rows("m_allMusicTableView"), QStringList({"b", "a"}));
    auto* song = static_cast<QMusicInfo*>(
        view<QTableView>("m_allMusicTableView")->model()->index(1, 0).internalPointer());
    song->localInfo->title = "c";
    m_center->SlotMusicInfoHaveBeEdited();
    QCOMPARE(rows("m_allMusicTableView"), QStringList({"c", "b"}));
}

void TestSorting::foundSongsKeepTheOrder()
{
    add({tone("a", "pop c"), tone("b", "x"), tone("c", "pop a")});
    m_center->OnBtnTableView();
    clickHeader("m_allMusicTableView", 0);
    type("pop c");
    QCOMPARE(rows("m_allMusicTableView"), QStringList({"pop a", "pop c"})); // the one by its file
    type("");
    QCOMPARE(rows("m_allMusicTableView"), QStringList({"pop a", "pop c", "x"}));
}

void TestSorting::groupsHaveAnOrderOfTheirOwn()
{
    add({tone("a", "One"), tone("b", "Two"), tone("c", "Two"), tone("d", "One"), tone("e", "Two")});
    m_center->slotShowDuplicateMusicView();
    m_center->OnBtnTableView();
    const char* table = "m_dupMusicTableView";
    auto* header = view<QTableView>(table)->horizontalHeader();
    header->setOffsetToLastSection();
    clickHeader(table, 6);
    QCOMPARE(rows(table), QStringList({"One", "Two"}));
    clickHeader(table, 6);
    QCOMPARE(rows(table), QStringList({"Two", "One"}));
    QCOMPARE(rows("m_allMusicTableView").first(), QString("One"));
    QCOMPARE(rows("m_dupMusicListView"), QStringList({"Two", "One"}));
}

void TestSorting::aSortedGroupIsTheTrueOne()
{
    add({tone("a1", "a"), tone("b1", "b"), tone("c1", "c"), tone("a2", "a"), tone("b2", "b"),
         tone("c2", "c")});
    m_center->slotShowDuplicateMusicView();
    m_center->OnBtnTableView();
    clickHeader("m_dupMusicTableView", 0);
    clickHeader("m_dupMusicTableView", 0);
    QCOMPARE(rows("m_dupMusicTableView"), QStringList({"c", "b", "a"}));
    clickRow(view<QTableView>("m_dupMusicTableView"), 0);
    FootText told;
    connect(m_center.get(), &CenterWidget::emitTold, this, [&told](const FootText& text) { told = text; });
    auto* panel = m_center->findChild<DuplicateMusicDetailedWidget*>();
    panel->SlotDeleteSongWasSelected();
    QVERIFY(!QFile::exists(m_folder->filePath("c2.mp3")));
    QCOMPARE(rows("m_dupMusicTableView"), QStringList({"b", "a"}));
    told.links.first().act(); // the next one as they are shown
    QCOMPARE(panel->keptSongs().first()->localInfo->title, QString("b"));
    QCOMPARE(view<QTableView>("m_dupMusicTableView")->currentIndex().row(), 0);
}

void TestSorting::theArrowStandsBehindItsCaption()
{
    add({tone("a", "One")});
    m_center->OnBtnTableView();
    auto* table = view<QTableView>("m_allMusicTableView");
    table->setColumnWidth(0, 200);
    QHeaderView* header = table->horizontalHeader();
    const QImage plain = header->grab(QRect(0, 0, 200, header->height())).toImage();
    clickHeader("m_allMusicTableView", 0);
    const auto arrowColumns = [&] {
        const QImage marked = header->grab(QRect(0, 0, 200, header->height())).toImage();
        QVector<int> columns;
        for (int x = 0; x < marked.width(); ++x)
            for (int y = 0; y < marked.height(); ++y)
                if (marked.pixel(x, y) != plain.pixel(x, y) && !columns.contains(x))
                    columns.append(x);
        return columns;
    };
    const QVector<int> forwards = arrowColumns();
    QVERIFY(!forwards.isEmpty());
    QVERIFY(forwards.first() > 100 && forwards.last() < 150);
    clickHeader("m_allMusicTableView", 0);
    QVERIFY(!arrowColumns().isEmpty());
    clickHeader("m_allMusicTableView", 0);
    QVERIFY(arrowColumns().isEmpty());
}

QTEST_MAIN(TestSorting)
#include "tst_sorting.moc"
