// What keys do in the four views of songs and groups, in both modes.
#include "keysfixture.h"

class TestCenterKeys : public KeysFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void arrowsMarkSongsAsClicksDo_data() { bothModesAndDisplays(); }
    void arrowsMarkSongsAsClicksDo();
    void arrowsMarkGroupsAsClicksDo_data() { bothModesAndDisplays(); }
    void arrowsMarkGroupsAsClicksDo();
    void pagesAndEndsAreReached_data() { bothModesAndDisplays(); }
    void pagesAndEndsAreReached();
    void arrowsFollowTheLinesOfTheGrid();
    void enterPlays_data() { bothModesAndDisplays(); }
    void enterPlays();
    void lettersJumpToTitles_data() { bothModesAndDisplays(); }
    void lettersJumpToTitles();
    void aSpaceOfATitleTogglesNothing();
    void spaceTogglesTheRowAtHand_data() { bothModesAndDisplays(); }
    void spaceTogglesTheRowAtHand();
    void theRowWithTheFocusIsAtHand();
    void groupsAreGoneThrough_data() { bothModesAndDisplays(); }
    void groupsAreGoneThrough();
    void afterAClearingTheNextGroupIsOneKeyAway_data() { bothModesAndDisplays(); }
    void afterAClearingTheNextGroupIsOneKeyAway();
    void deleteAsksAsTheButtonDoes();
    void viewsAreChosen_data() { bothModesAndDisplays(); }
    void viewsAreChosen();
    void displaysAreSwitched_data() { bothModesAndDisplays(); }
    void displaysAreSwitched();
    void arrowsDoNotLeadToButtons();
    void aBanKeepsKeysFromSongs();
    void keysThatAreHeldGoOnMovingAlone();
    void withoutSongsNothingHappens();
};

void TestCenterKeys::arrowsMarkSongsAsClicksDo()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon", "Cove"});
    showTable(table);
    const int forward = table ? Qt::Key_Down : Qt::Key_Right;
    QCOMPARE(row(), -1);
    key(forward);
    QCOMPARE(row(), 0);
    QCOMPARE(shownTitle(), QString("Anchor"));
    key(forward);
    QCOMPARE(shownTitle(), QString("Beacon"));
    QCOMPARE(part<QAbstractItemView>("m_allMusicListView")->currentIndex().row(), 1);
    QCOMPARE(part<QAbstractItemView>("m_allMusicTableView")->currentIndex().row(), 1);
    key(forward);
    key(forward); // there is no more
    QCOMPARE(shownTitle(), QString("Cove"));
    key(table ? Qt::Key_Up : Qt::Key_Left);
    QCOMPARE(shownTitle(), QString("Beacon"));
    QCOMPARE(row(), 1);
}

void TestCenterKeys::arrowsMarkGroupsAsClicksDo()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor", "Beacon", "Beacon", "Beacon"});
    click("m_btnMusicDuplicate");
    showTable(table);
    key(Qt::Key_Down);
    QCOMPARE(rows().size(), 2);
    QVERIFY(group()->isVisible());
    key(table ? Qt::Key_Down : Qt::Key_Right);
    QCOMPARE(row(), 1);
    QCOMPARE(rows().size(), 3);
    QCOMPARE(part<QAbstractItemView>("m_dupMusicListView")->currentIndex().row(), 1);
    QCOMPARE(part<QAbstractItemView>("m_dupMusicTableView")->currentIndex().row(), 1);
}

void TestCenterKeys::pagesAndEndsAreReached()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    QStringList titles;
    for (int i = 0; i < 60; ++i)
        titles.append(QString("Song %1").arg(i));
    fill(local, titles);
    showTable(table);
    key(Qt::Key_End);
    QCOMPARE(row(), 59);
    QCOMPARE(shownTitle(), QString("Song 59"));
    QVERIFY(view()->viewport()->rect().contains(view()->visualRect(view()->currentIndex())));
    key(Qt::Key_PageUp);
    const int page = 59 - row();
    QVERIFY(page > 4 && page < 59);
    key(Qt::Key_Home);
    QCOMPARE(row(), 0);
    key(Qt::Key_PageDown);
    QCOMPARE(row(), page);
    QCOMPARE(shownTitle(), QString("Song %1").arg(page));
}

void TestCenterKeys::arrowsFollowTheLinesOfTheGrid()
{
    QStringList titles;
    for (int i = 0; i < 12; ++i)
        titles.append(QString("Song %1").arg(i));
    fill(true, titles);
    key(Qt::Key_Home);
    key(Qt::Key_Down);
    const int columns = row();
    const auto place = [this](int row) { return view()->visualRect(view()->model()->index(row, 0)); };
    QVERIFY(columns > 2);
    QCOMPARE(place(columns).left(), place(0).left());
    QVERIFY(place(columns).top() > place(0).top());
    QCOMPARE(place(columns - 1).top(), place(0).top());
    key(Qt::Key_Left); // the end of the line above
    QCOMPARE(row(), columns - 1);
    key(Qt::Key_End);
    key(Qt::Key_Up);
    QCOMPARE(row(), 11 - columns);
}

void TestCenterKeys::enterPlays()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon", "Beacon"});
    showTable(table);
    key(Qt::Key_Return); // without a mark
    QCOMPARE(m_played.size(), 0);
    key(Qt::Key_Home);
    key(Qt::Key_Return);
    QCOMPARE(m_played.size(), 1);
    QCOMPARE(m_played.last(), QString("Anchor"));
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    key(Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(m_played.size(), 2);
    QCOMPARE(m_played.last(), QString("Beacon"));
}

void TestCenterKeys::lettersJumpToTitles()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Midnight Ferry", "Cove", "Mist", "Cove", "Mist", "Étude"});
    showTable(table);
    QApplication::setKeyboardInputInterval(60000);
    key(Qt::Key_M);
    QCOMPARE(shownTitle(), QString("Midnight Ferry"));
    key(Qt::Key_I);
    key(Qt::Key_S);
    QCOMPARE(shownTitle(), QString("Mist"));
    QCOMPARE(row(), 3);
    QApplication::setKeyboardInputInterval(0);
    QTest::qWait(2);
    key(Qt::Key_M, Qt::ShiftModifier); // the next one
    QCOMPARE(row(), 5);
    QTest::qWait(2);
    key(Qt::Key_X); // there is none
    QCOMPARE(row(), 5);
    QTest::qWait(2);
    key(Qt::Key_E);
    QCOMPARE(shownTitle(), QString("Étude"));
    key(Qt::Key_3, Qt::ControlModifier);
    QTest::qWait(2);
    key(Qt::Key_M);
    QCOMPARE(markedTitle(), QString("Mist"));
    QCOMPARE(rows().size(), 2);
    QApplication::setKeyboardInputInterval(400);
}

void TestCenterKeys::aSpaceOfATitleTogglesNothing()
{
    fill(true, {"The Beacon", "The Beacon", "The Cove", "The Cove"});
    key(Qt::Key_3, Qt::ControlModifier);
    QApplication::setKeyboardInputInterval(60000);
    for (const char letter : QByteArray("THE C"))
        key(letter);
    QApplication::setKeyboardInputInterval(400);
    QCOMPARE(markedTitle(), QString("The Cove"));
    QCOMPARE(kept(), QList<bool>({true, false}));
}

void TestCenterKeys::spaceTogglesTheRowAtHand()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor", "Anchor"});
    key(Qt::Key_3, Qt::ControlModifier);
    showTable(table);
    key(Qt::Key_Space); // no group is shown
    key(Qt::Key_Home);
    QCOMPARE(kept(), QList<bool>({true, false, false}));
    key(Qt::Key_Space);
    QCOMPARE(kept(), QList<bool>({false, false, false}));
    key(Qt::Key_Down, Qt::AltModifier);
    key(Qt::Key_Space);
    QCOMPARE(kept(), QList<bool>({false, true, false}));
    key(Qt::Key_Down, Qt::AltModifier);
    key(Qt::Key_Down, Qt::AltModifier); // there is no more
    key(Qt::Key_Space);
    QCOMPARE(kept(), QList<bool>({false, true, true}));
    key(Qt::Key_Up, Qt::AltModifier);
    key(Qt::Key_Space);
    QCOMPARE(kept(), QList<bool>({false, false, true}));
    key(Qt::Key_1, Qt::ControlModifier);
    key(Qt::Key_Space); // the panel is hidden
    QCOMPARE(kept(), QList<bool>({false, false, true}));
}

void TestCenterKeys::theRowWithTheFocusIsAtHand()
{
    fill(true, {"Anchor", "Anchor", "Anchor"});
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    QTest::mouseClick(rows().at(2)->findChild<QImageButton*>("m_btnIsDeleta"), Qt::LeftButton);
    QCOMPARE(kept(), QList<bool>({true, false, true}));
    QCOMPARE(group()->rowAtHand(), rows().at(2));
    key(Qt::Key_Space); // by the button itself
    QCOMPARE(kept(), QList<bool>({true, false, false}));
    key(Qt::Key_Up, Qt::AltModifier);
    key(Qt::Key_Space);
    QCOMPARE(kept(), QList<bool>({true, true, false}));
}

void TestCenterKeys::groupsAreGoneThrough()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor", "Beacon", "Beacon", "Cove", "Cove"});
    key(Qt::Key_Down, Qt::ControlModifier); // these are songs
    QCOMPARE(row(), -1);
    key(Qt::Key_3, Qt::ControlModifier);
    showTable(table);
    key(Qt::Key_Up, Qt::ControlModifier);
    QCOMPARE(row(), -1);
    for (const char* title : {"Anchor", "Beacon", "Cove", "Cove"}) {
        key(Qt::Key_Down, Qt::ControlModifier);
        QCOMPARE(markedTitle(), QString(title));
        QVERIFY(group()->isVisible());
    }
    key(Qt::Key_Up, Qt::ControlModifier);
    QCOMPARE(markedTitle(), QString("Beacon"));
    QCOMPARE(SongFields::title(rows().first()->song()), QString("Beacon"));
}

/// The panel is empty by then, and offers nothing.
void TestCenterKeys::afterAClearingTheNextGroupIsOneKeyAway()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor", "Beacon", "Beacon", "Cove", "Cove"});
    key(Qt::Key_3, Qt::ControlModifier);
    showTable(table);
    key(Qt::Key_Home);
    key(Qt::Key_Down, Qt::ControlModifier);
    m_dialogs->expectButton("m_btnOK");
    key(Qt::Key_Delete);
    QCOMPARE(view()->model()->rowCount(), 2);
    QVERIFY(rows().isEmpty());
    for (const char* button : {"m_btnClearOne", "m_btnClearAll", "m_labCaption"})
        QVERIFY2(group()->findChild<QWidget*>(button)->isHidden(), button);
    key(Qt::Key_Delete); // asks nothing: there is no button
    QApplication::setActiveWindow(m_window.get());
    key(Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(markedTitle(), QString("Cove"));
    QVERIFY(group()->findChild<QWidget*>("m_btnClearOne")->isVisible());
    m_dialogs->expectButton("m_btnOK");
    key(Qt::Key_Delete);
    QApplication::setActiveWindow(m_window.get());
    key(Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(row(), -1);
    key(Qt::Key_Up, Qt::ControlModifier);
    QCOMPARE(markedTitle(), QString("Anchor"));
}

void TestCenterKeys::deleteAsksAsTheButtonDoes()
{
    fill(true, {"Anchor", "Anchor"});
    key(Qt::Key_Home);
    key(Qt::Key_Delete); // of songs
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Delete); // no group is shown
    key(Qt::Key_Home);
    QString asked;
    m_dialogs->expect([&asked](QWidget* dialog) {
        asked = dialog->findChild<QLabel*>("m_labQuestion")->text();
        dialog->close();
    });
    key(Qt::Key_Delete);
    QVERIFY(!asked.isEmpty());
    QCOMPARE(rows().size(), 2);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).filter(".mp3").size(), 2);
}

void TestCenterKeys::viewsAreChosen()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor", ""});
    showTable(table);
    const QString ending = table ? "TableView" : "ListView";
    key(Qt::Key_Home);
    QVERIFY(panel()->isVisible());
    key(Qt::Key_2, Qt::ControlModifier);
    QVERIFY(panel()->isHidden());
    QCOMPARE(view()->objectName(), "m_allMusic" + ending);
    QCOMPARE(view()->model()->rowCount(), 1);
    QVERIFY(!part<QWidget>("m_btnMusicUndefined")->isEnabled());
    key(Qt::Key_3, Qt::ControlModifier | Qt::KeypadModifier);
    QCOMPARE(view()->objectName(), "m_dupMusic" + ending);
    key(Qt::Key_1, Qt::ControlModifier);
    QCOMPARE(view()->objectName(), "m_allMusic" + ending);
    QCOMPARE(view()->model()->rowCount(), 3);
    QVERIFY(!part<QWidget>("m_btnMusicAll")->isEnabled());
}

void TestCenterKeys::displaysAreSwitched()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor"});
    showTable(table);
    const QStringList names = {"TableView", "ListView"};
    key(Qt::Key_G, Qt::ControlModifier);
    QCOMPARE(view()->objectName(), "m_allMusic" + names.at(int(table)));
    QVERIFY(part<QWidget>(table ? "m_btnTableDisplay" : "m_btnGridDisplay")->isEnabled());
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_G, Qt::ControlModifier);
    QCOMPARE(view()->objectName(), "m_dupMusic" + names.at(int(!table)));
}

void TestCenterKeys::arrowsDoNotLeadToButtons()
{
    fill(true, {"Anchor", "Beacon"});
    part<QWidget>("m_btnStarScan")->setFocus();
    key(Qt::Key_Right);
    key(Qt::Key_Right);
    QCOMPARE(shownTitle(), QString("Beacon"));
    QVERIFY(part<QWidget>("m_viewFocus")->hasFocus()); // the next Space is for the view
    QVERIFY(part<QWidget>("m_btnMusicDuplicate")->isEnabled());
}

void TestCenterKeys::aBanKeepsKeysFromSongs()
{
    fill(true, {"Anchor", "Beacon"});
    key(Qt::Key_Home);
    part<CenterWidget>("m_middleMusicWidget")->SlotForbidToClickView(true);
    key(Qt::Key_End);
    key(Qt::Key_B);
    QCOMPARE(row(), 0);
    QCOMPARE(shownTitle(), QString("Anchor"));
    key(Qt::Key_3, Qt::ControlModifier);
    QCOMPARE(view()->objectName(), QString("m_allMusicListView"));
    part<CenterWidget>("m_middleMusicWidget")->SlotForbidToClickView(false);
}

void TestCenterKeys::keysThatAreHeldGoOnMovingAlone()
{
    fill(true, {"Anchor", "Anchor", "Beacon"});
    key(Qt::Key_Home);
    const auto hold = [this](int key) {
        QKeyEvent held(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(m_window->focusWidget(), &held);
    };
    hold(Qt::Key_Right);
    hold(Qt::Key_Right);
    QCOMPARE(row(), 2);
    hold(Qt::Key_Return);
    QCOMPARE(m_played.size(), 0);
}

void TestCenterKeys::withoutSongsNothingHappens()
{
    QApplication::setActiveWindow(m_window.get());
    const QList<int> keys = {Qt::Key_Up,     Qt::Key_Home, Qt::Key_Return, Qt::Key_Space, Qt::Key_A,
                             Qt::Key_Delete, Qt::Key_F2,   Qt::Key_Menu,   Qt::Key_End};
    const auto pressAll = [&] {
        for (const int each : keys)
            for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ControlModifier, Qt::AltModifier})
                key(each, modifier);
    };
    m_window->focusWidget() ? m_window->focusWidget()->clearFocus() : void();
    pressAll();
    switchToLocal();
    m_window->focusWidget() ? m_window->focusWidget()->clearFocus() : void();
    pressAll();
    QVERIFY(!view());
    QVERIFY(panel()->isHidden() && group()->isHidden());
}

QTEST_MAIN(TestCenterKeys)
#include "tst_centerkeys.moc"
