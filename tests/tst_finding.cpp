#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "dupmusicinfo.h"
#include "findingfixture.h"
#include "itunes/itunestrackrecord.h"
#include "musicdetailedinfowidget.h"
#include "qmusicinfo.h"

#include <QListView>
#include <QSignalSpy>

class TestFinding : public FindingFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepare(); }
    void cleanup() { clear(); }

    void whatIsTypedNarrowsTheView_data() { bothDisplays(); }
    void whatIsTypedNarrowsTheView();
    void theKeysGoThereAndBack();
    void chosenButtonsKeepTheFocusFromTheField();
    void theCrossEmptiesTheField();
    void everyViewIsNarrowed();
    void nothingFoundIsSaidInTheMiddle();
    void theMarkStaysWithItsSong();
    void editsAreFound();
    void aFoundGroupIsTheTrueOne();
    void theNextGroupIsTheOneThatShows();
    void clearingAllTakesGroupsThatAreNotFound();
    void whatComesBackIsFound();
    void tracksAreFoundAsWell();
    void anotherModeEmptiesTheField();
    void everythingFitsAboveTheSmallestView();

private:
    void addThreeGroups();
    void clearShownGroup() const;
};

/// Three pairs: "One", "Two", "Three".
void TestFinding::addThreeGroups()
{
    add({tone("a1", "One"), tone("b1", "Two"), tone("c1", "Three"), tone("a2", "One"), tone("b2", "Two"),
         tone("c2", "Three")});
    m_center->slotShowDuplicateMusicView();
}

void TestFinding::clearShownGroup() const
{
    m_center->findChild<DuplicateMusicDetailedWidget*>()->SlotDeleteSongWasSelected();
}

void TestFinding::whatIsTypedNarrowsTheView()
{
    QFETCH(bool, table);
    add({tone("a", "Midnight"), tone("b", "Fjord"), tone("c", "Ferry")});
    display(table);
    QSignalSpy counts(m_center.get(), SIGNAL(emitMusicCount(int, int, int)));
    const char* name = table ? "m_allMusicTableView" : "m_allMusicListView";
    QCOMPARE(count(), QString());
    QTest::keyClicks(field(), "F");
    QCOMPARE(rows(name), QStringList({"Fjord", "Ferry"}));
    QCOMPARE(count(), QString("2 of 3"));
    QTest::sendKeyEvent(QTest::Click, field(), Qt::Key_Eacute, QStringLiteral("é"), Qt::NoModifier);
    QCOMPARE(rows(name), QStringList({"Ferry"}));
    QCOMPARE(count(), QString("1 of 3"));
    clickRow(view<QAbstractItemView>(name), 0);
    QCOMPARE(m_center->findChild<QLabel*>("m_titleName")->text(), QString("Ferry"));
    QTest::keyClick(field(), Qt::Key_Escape);
    QCOMPARE(rows(name).size(), 3);
    QCOMPARE(count(), QString());
    QCOMPARE(view<QAbstractItemView>(name)->currentIndex().row(), 2);
    QVERIFY(counts.isEmpty()); // those of the whole stay
}

void TestFinding::theKeysGoThereAndBack()
{
    add({tone("a", "One")});
    QApplication::setActiveWindow(m_center.get());
    QVERIFY(!field()->hasFocus());
    QTest::keyClick(m_center.get(), Qt::Key_F, Qt::ControlModifier);
    QVERIFY(field()->hasFocus());
    QTest::keyClicks(field(), "x");
    QTest::keyClick(field(), Qt::Key_Return);
    QVERIFY(!field()->hasFocus());
    QCOMPARE(field()->text(), QString("x"));
    QTest::keyClick(m_center.get(), Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(field()->selectedText(), QString("x")); // what is typed next takes its place
    QTest::keyClick(field(), Qt::Key_Escape);
    QVERIFY(!field()->hasFocus());
    QCOMPARE(field()->text(), QString());
}

void TestFinding::chosenButtonsKeepTheFocusFromTheField()
{
    add({tone("a", "One")});
    QApplication::setActiveWindow(m_center.get());
    for (const char* name : {"m_btnTableDisplay", "m_btnGridDisplay", "m_btnTableDisplay"}) {
        m_center->findChild<QWidget*>(name)->setFocus();
        QTest::mouseClick(m_center->findChild<QWidget*>(name), Qt::LeftButton); // which disables it
        QVERIFY(!field()->hasFocus());
    }
}

void TestFinding::theCrossEmptiesTheField()
{
    auto* cross = field()->findChild<QAbstractButton*>();
    QVERIFY(cross->isHidden());
    type("x");
    QVERIFY(cross->isVisible());
    QTest::mouseClick(cross, Qt::LeftButton);
    QVERIFY(field()->text().isEmpty() && cross->isHidden());
}

void TestFinding::everyViewIsNarrowed()
{
    addThreeGroups();
    QCOMPARE(rows("m_dupMusicListView"), QStringList({"One", "Two", "Three"}));
    type("B2"); // the file name of one of them
    QCOMPARE(rows("m_dupMusicListView"), QStringList({"Two"}));
    QCOMPARE(rows("m_dupMusicTableView"), QStringList({"Two"}));
    QCOMPARE(count(), QString("1 of 3"));
    m_center->slotShowAllmusicView();
    QCOMPARE(count(), QString("1 of 6"));
    QCOMPARE(rows("m_allMusicListView"), QStringList({"Two"}));
    m_center->slotShowUndefineMusicView();
    QCOMPARE(count(), QString("0 of 0"));
    field()->clear();
    m_center->slotShowDuplicateMusicView();
    QCOMPARE(rows("m_dupMusicListView").size(), 3);
}

void TestFinding::nothingFoundIsSaidInTheMiddle()
{
    addThreeGroups();
    QCOMPARE(notice(), QString());
    type("nowhere");
    QCOMPARE(notice(),
             QStringLiteral("No group has “nowhere”\nEmpty the field above to see all 3 groups again."));
    m_center->slotShowAllmusicView();
    m_center->OnBtnTableView();
    QCOMPARE(notice(),
             QStringLiteral("No song has “nowhere”\nEmpty the field above to see all 6 songs again."));
    QCOMPARE(count(), QString("0 of 6"));
    m_center->slotShowUndefineMusicView(); // which is empty, whatever is looked for
    QVERIFY(notice().startsWith("No undefined songs."));
    m_center->slotShowAllmusicView();
    QTest::keyClick(field(), Qt::Key_Escape);
    QCOMPARE(notice(), QString());
}

void TestFinding::theMarkStaysWithItsSong()
{
    add({tone("a", "One"), tone("b", "Two"), tone("c", "Third")});
    auto* list = view<QListView>("m_allMusicListView");
    clickRow(list, 1);
    type("t"); // of "Two" and "Third"
    QCOMPARE(list->currentIndex().row(), 0);
    QCOMPARE(view<QTableView>("m_allMusicTableView")->currentIndex().row(), 0);
    type("th");
    QVERIFY(!list->currentIndex().isValid());
    QVERIFY(m_center->findChild<MusicDetailedInfoWidget*>()->isVisible()); // it stays open
    QTest::keyClick(field(), Qt::Key_Escape);
    QCOMPARE(list->currentIndex().row(), 1);
    m_center->slotShowUndefineMusicView();
    m_center->slotShowAllmusicView();
    type("t");
    QVERIFY(!list->currentIndex().isValid()); // another view begins without one
}

void TestFinding::editsAreFound()
{
    add({tone("a", "Before"), tone("b", "Before too")});
    type("before");
    clickRow(view<QListView>("m_allMusicListView"), 0);
    auto* panel = m_center->findChild<MusicDetailedInfoWidget*>();
    panel->SlotOnBtnEdit();
    panel->findChild<QLineEdit*>("m_lineTitle")->setText("After");
    panel->SlotOnBtnApply();
    QCOMPARE(rows("m_allMusicListView"), QStringList({"Before too"}));
    QCOMPARE(count(), QString("1 of 2"));
    QVERIFY(panel->isVisible());
    type("after");
    QCOMPARE(rows("m_allMusicListView"), QStringList({"After"}));
    m_center->SlotUndo();
    QCOMPARE(rows("m_allMusicListView"), QStringList());
    type("before");
    QCOMPARE(rows("m_allMusicListView").size(), 2);
}

void TestFinding::aFoundGroupIsTheTrueOne()
{
    addThreeGroups();
    type("two");
    clickRow(view<QListView>("m_dupMusicListView"), 0);
    clearShownGroup();
    QVERIFY(QFile::exists(m_folder->filePath("b1.mp3")));
    QVERIFY(!QFile::exists(m_folder->filePath("b2.mp3")));
    QCOMPARE(rows("m_dupMusicListView"), QStringList()); // it is none any more
    QCOMPARE(count(), QString("0 of 2"));
    type("");
    QCOMPARE(rows("m_dupMusicListView"), QStringList({"One", "Three"}));
    m_center->slotShowAllmusicView();
    QCOMPARE(rows("m_allMusicListView"), QStringList({"One", "Two", "Three", "One", "Three"}));
}

void TestFinding::theNextGroupIsTheOneThatShows()
{
    addThreeGroups();
    FootText told;
    connect(m_center.get(), &CenterWidget::emitTold, this, [&told](const FootText& text) { told = text; });
    type("e"); // of "One" and "Three"
    QCOMPARE(rows("m_dupMusicListView"), QStringList({"One", "Three"}));
    clickRow(view<QListView>("m_dupMusicListView"), 0);
    clearShownGroup();
    QCOMPARE(told.links.size(), 1);
    told.links.first().act();
    auto* panel = m_center->findChild<DuplicateMusicDetailedWidget*>();
    QCOMPARE(panel->keptSongs().first()->localInfo->title, QString("Three"));
    QCOMPARE(view<QListView>("m_dupMusicListView")->currentIndex().row(), 0);
    clearShownGroup();
    QVERIFY(told.links.isEmpty()); // the other one is not found
}

void TestFinding::clearingAllTakesGroupsThatAreNotFound()
{
    addThreeGroups();
    QString told;
    connect(m_center.get(), &CenterWidget::emitTold, this,
            [&told](const FootText& text) { told = text.text; });
    type("two");
    clickRow(view<QListView>("m_dupMusicListView"), 0);
    m_dialogs->expect([](QWidget*) {}); // the waiting dialog closes itself
    m_center->findChild<DuplicateMusicDetailedWidget*>()->SlotOnBtnDeleteAllSong();
    QCOMPARE(m_center->ReturnDuplicateMusicCount(), 0);
    for (const char* name : {"a2", "b2", "c2"})
        QVERIFY(!QFile::exists(m_folder->filePath(name + QString(".mp3"))));
    QVERIFY2(told.contains("3"), qPrintable(told));
    QCOMPARE(rows("m_dupMusicListView"), QStringList());
    type("");
    m_center->slotShowAllmusicView();
    QCOMPARE(rows("m_allMusicListView"), QStringList({"One", "Two", "Three"}));
}

void TestFinding::whatComesBackIsFound()
{
    addThreeGroups();
    type("two");
    clickRow(view<QListView>("m_dupMusicListView"), 0);
    clearShownGroup();
    QCOMPARE(rows("m_dupMusicListView"), QStringList());
    m_center->SlotUndo();
    QCOMPARE(rows("m_dupMusicListView"), QStringList({"Two"}));
    QCOMPARE(count(), QString("1 of 3"));
    QCOMPARE(view<QListView>("m_dupMusicListView")->currentIndex().row(), 0);
    type("one"); // the group that songs come back to may be one that is not found
    m_center->findChild<DuplicateMusicDetailedWidget*>()->SlotDeleteSongWasSelected();
    m_center->SlotUndo();
    QCOMPARE(rows("m_dupMusicListView"), QStringList({"One"}));
    QVERIFY(!view<QListView>("m_dupMusicListView")->currentIndex().isValid());
    QCOMPARE(m_center->findChild<DuplicateMusicDetailedWidget*>()->keptSongs().first()->localInfo->title,
             QString("Two"));
}

void TestFinding::tracksAreFoundAsWell()
{
    m_center->SwitchToiTunesCleanModel();
    iTunesTrackRecord records[3] = {};
    std::vector<std::unique_ptr<QMusicInfo>> songs;
    QList<QMusicInfo*> list;
    for (iTunesTrackRecord& record : records) {
        record.name = songs.size() == 1 ? "Fjord" : "Ferry";
        record.artist = record.album = record.genre = "x";
        record.duration = 120000;
        songs.push_back(std::make_unique<QMusicInfo>());
        songs.back()->track = &record;
        list.append(songs.back().get());
    }
    m_center->setMusicInfoList(&list);
    type("ferry");
    QCOMPARE(rows("m_allMusicListView"), QStringList({"Ferry", "Ferry"}));
    m_center->slotShowDuplicateMusicView();
    QCOMPARE(count(), QString("1 of 1"));
    type("fjord");
    QCOMPARE(count(), QString("0 of 1"));
    m_center->SwitchToLocalCleanModel();
}

void TestFinding::anotherModeEmptiesTheField()
{
    add({tone("a", "One")});
    type("x");
    m_center->SwitchToiTunesCleanModel();
    QCOMPARE(field()->text(), QString());
    QCOMPARE(count(), QString());
}

void TestFinding::everythingFitsAboveTheSmallestView()
{
    m_center->resize(800, 572); // what a window of 1000 by 700 leaves
    auto* label = m_center->findChild<QLabel*>("m_labFound");
    label->setText("1,000,000 of 1,000,000");
    QCoreApplication::processEvents();
    const auto place = [this](const QWidget* part) {
        return QRect(part->mapTo(m_center.get(), QPoint()), part->size());
    };
    const QRect buttons = place(m_center->findChild<QWidget*>("m_btnGridDisplay"));
    QVERIFY(label->width() >= label->sizeHint().width());
    QVERIFY(place(label).right() <= buttons.left() - 16);
    QVERIFY(place(field()).right() < place(label).left());
    QVERIFY(field()->width() >= 150);
    m_center->resize(1600, 900);
    QCoreApplication::processEvents();
    QCOMPARE(field()->width(), 280);
}

QTEST_MAIN(TestFinding)
#include "tst_finding.moc"
