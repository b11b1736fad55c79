// Keys and the field for what is looked for: which of the two has them, and what they do in a view that shows
// but what was found, in another order.
#include "keysfixture.h"

#include <QClipboard>
#include <QHeaderView>
#include <QMenu>
#include <QTableView>

class TestFindingKeys : public KeysFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void keysGoByWhatShows_data() { bothModesAndDisplays(); }
    void keysGoByWhatShows();
    void lettersJumpInWhatShows_data() { bothModesAndDisplays(); }
    void lettersJumpInWhatShows();
    void theTrueSongIsActedOn_data() { bothModesAndDisplays(); }
    void theTrueSongIsActedOn();
    void groupsThatShowAreGoneThrough_data() { bothModesAndDisplays(); }
    void groupsThatShowAreGoneThrough();
    void theTrueGroupIsCleared();
    void aGroupThatIsNotFoundIsLeftBehind();
    void theFieldKeepsItsKeys();
    void leftBehindTheFieldLieTheViews_data();
    void leftBehindTheFieldLieTheViews();
    void aPressOnAHeaderLeavesTheField();
    void tabReachesTheField();
    void chosenButtonsDoNotLeadIntoTheField();

private:
    QLineEdit* field() const { return part<QLineEdit>("m_findField"); }
    QWidget* viewFocus() const { return part<QWidget>("m_viewFocus"); }
    void typeKeys(const QString& letters) const { QTest::keyClicks(field(), letters); }
    void openField() const
    {
        QApplication::setActiveWindow(m_window.get()); // that of a song that plays may be it
        key(Qt::Key_F, Qt::ControlModifier);
    }
    void find(const QString& typed) const
    {
        openField();
        typeKeys(typed);
        key(Qt::Key_Return);
    }
    void showAll() const
    {
        openField();
        key(Qt::Key_Escape);
    }
    QStringList shown() const
    {
        QStringList titles;
        for (int row = 0; row < view()->model()->rowCount(); ++row)
            titles.append(view()->model()->index(row, 0).data().toString());
        return titles;
    }
    /// Orders by title, backwards, whichever display shows then.
    void orderBackwards(bool table) const
    {
        showTable(true);
        const bool groups = view()->objectName().startsWith("m_dup");
        const QHeaderView* header =
            part<QTableView>(groups ? "m_dupMusicTableView" : "m_allMusicTableView")->horizontalHeader();
        for (int click = 0; click < 2; ++click)
            QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 10));
        if (!table)
            key(Qt::Key_G, Qt::ControlModifier);
    }
    void goOn(bool table) const { key(table ? Qt::Key_Down : Qt::Key_Right); }
};

void TestFindingKeys::keysGoByWhatShows()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon", "Cove", "Beach", "Bean", "Dune"});
    orderBackwards(table);
    find("be");
    QCOMPARE(shown(), QStringList({"Bean", "Beacon", "Beach"}));
    key(Qt::Key_Home);
    QCOMPARE(shownTitle(), QString("Bean"));
    goOn(table);
    QCOMPARE(row(), 1);
    QCOMPARE(shownTitle(), QString("Beacon"));
    key(Qt::Key_Return);
    QCOMPARE(m_played, QStringList({"Beacon"}));
    key(Qt::Key_End);
    QCOMPARE(shownTitle(), QString("Beach"));
    goOn(table); // there is no more
    QCOMPARE(shownTitle(), QString("Beach"));
    key(Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(m_played, QStringList({"Beacon", "Beach"}));
    showAll();
    QCOMPARE(markedTitle(), QString("Beach")); // among all, too
    QCOMPARE(row(), 4);
    goOn(table);
    QCOMPARE(shownTitle(), QString("Anchor"));
}

void TestFindingKeys::lettersJumpInWhatShows()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Mist", "Beacon", "Misty Cove", "Beacon Mist", "Dune"});
    orderBackwards(table);
    find("mist");
    QCOMPARE(shown(), QStringList({"Misty Cove", "Mist", "Beacon Mist"}));
    QApplication::setKeyboardInputInterval(60000);
    key(Qt::Key_B);
    QCOMPARE(shownTitle(), QString("Beacon Mist"));
    QApplication::setKeyboardInputInterval(0);
    QTest::qWait(2);
    key(Qt::Key_M);
    QCOMPARE(shownTitle(), QString("Misty Cove"));
    QTest::qWait(2);
    key(Qt::Key_M);
    QCOMPARE(shownTitle(), QString("Mist"));
    QTest::qWait(2);
    key(Qt::Key_D); // which does not show
    QCOMPARE(shownTitle(), QString("Mist"));
    QCOMPARE(field()->text(), QString("mist"));
    QApplication::setKeyboardInputInterval(400);
}

void TestFindingKeys::theTrueSongIsActedOn()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon", "Cove", "Bean"});
    orderBackwards(table);
    find("be");
    key(Qt::Key_End);
    key(Qt::Key_Menu);
    auto* menu = m_window->findChild<QMenu*>("m_songMenu");
    QVERIFY(menu);
    menu->actions().last()->trigger();
    menu->close();
    QVERIFY(QApplication::clipboard()->text().startsWith("Beacon"));
    key(Qt::Key_F2);
    QCOMPARE(panel()->findChild<QLineEdit*>("m_lineTitle")->text(), QString("Beacon"));
    type(panel(), "m_lineTitle", "Zebra Bell");
    key(Qt::Key_Return, Qt::ControlModifier);
    QCOMPARE(shown(), QStringList({"Zebra Bell", "Bean"}));
    QCOMPARE(markedTitle(), QString("Zebra Bell"));
    showAll();
    QCOMPARE(shown(), QStringList({"Zebra Bell", "Cove", "Bean", "Anchor"}));
    if (local)
        QCOMPARE(AudioFile::read(m_folder->filePath("001.mp3")).texts.value(TAG_TITLE),
                 QString("Zebra Bell"));
}

void TestFindingKeys::groupsThatShowAreGoneThrough()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor", "Beacon", "Beacon", "Cove", "Cove", "Beach", "Beach", "Bean", "Bean"});
    key(Qt::Key_3, Qt::ControlModifier);
    orderBackwards(table);
    find("be");
    for (const char* title : {"Bean", "Beacon", "Beach", "Beach"}) {
        key(Qt::Key_Down, Qt::ControlModifier);
        QCOMPARE(markedTitle(), QString(title));
        QCOMPARE(SongFields::title(rows().first()->song()), QString(title));
    }
    key(Qt::Key_Up, Qt::ControlModifier);
    QCOMPARE(markedTitle(), QString("Beacon"));
    m_dialogs->expectButton("m_btnOK");
    key(Qt::Key_Delete);
    QApplication::setActiveWindow(m_window.get());
    QCOMPARE(shown(), QStringList({"Bean", "Beach"}));
    key(Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(markedTitle(), QString("Beach"));
    key(Qt::Key_Return);
    QCOMPARE(m_played, QStringList({"Beach"}));
    showAll();
    QCOMPARE(shown(), QStringList({"Cove", "Bean", "Beach", "Anchor"}));
    QCOMPARE(markedTitle(), QString("Beach"));
}

void TestFindingKeys::theTrueGroupIsCleared()
{
    fill(true, {"Anchor", "Beacon", "Cove", "Anchor", "Beacon", "Cove"});
    key(Qt::Key_3, Qt::ControlModifier);
    orderBackwards(false);
    find("e"); // not in the first
    key(Qt::Key_End);
    key(Qt::Key_Down, Qt::AltModifier);
    key(Qt::Key_Space);
    key(Qt::Key_Up, Qt::AltModifier);
    key(Qt::Key_Space); // the second one is kept instead
    m_dialogs->expectButton("m_btnOK");
    key(Qt::Key_Delete);
    const QStringList left = QDir(m_folder->path()).entryList({"*.mp3"});
    QCOMPARE(left, QStringList({"000.mp3", "002.mp3", "003.mp3", "004.mp3", "005.mp3"}));
}

/// The next one is the first that shows.
void TestFindingKeys::aGroupThatIsNotFoundIsLeftBehind()
{
    fill(true, {"Beacon", "Beacon", "Beach", "Beach", "Cove", "Cove"});
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_End);
    find("be");
    QCOMPARE(row(), -1);
    key(Qt::Key_Up, Qt::ControlModifier);
    QCOMPARE(row(), -1);
    key(Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(markedTitle(), QString("Beacon"));
    find("cove");
    key(Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(SongFields::title(rows().first()->song()), QString("Cove"));
}

void TestFindingKeys::theFieldKeepsItsKeys()
{
    fill(true, {"Anchor", "Anchor", "Cove"});
    key(Qt::Key_Home);
    key(Qt::Key_F, Qt::ControlModifier);
    typeKeys("ove or");
    for (const int each : {Qt::Key_Home, Qt::Key_Delete, Qt::Key_End, Qt::Key_Left, Qt::Key_Up, Qt::Key_Down,
                           Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_F2, Qt::Key_Space, Qt::Key_Backspace})
        key(each);
    for (const int each : {Qt::Key_2, Qt::Key_3, Qt::Key_G, Qt::Key_E, Qt::Key_I, Qt::Key_Down})
        key(each, Qt::ControlModifier);
    QVERIFY(field()->hasFocus());
    QCOMPARE(field()->text(), QString("ve or"));
    QCOMPARE(view()->objectName(), QString("m_allMusicListView"));
    QCOMPARE(shownTitle(), QString("Anchor"));
    QVERIFY(!panel()->findChild<QLineEdit*>("m_lineTitle")->isVisible());
    key(Qt::Key_Return);
    QVERIFY(m_played.isEmpty());
}

void TestFindingKeys::leftBehindTheFieldLieTheViews_data()
{
    QTest::addColumn<int>("leaving");
    QTest::addColumn<QString>("text");
    QTest::newRow("Escape") << int(Qt::Key_Escape) << QString();
    QTest::newRow("Return") << int(Qt::Key_Return) << QString("co");
    QTest::newRow("Enter") << int(Qt::Key_Enter) << QString("co");
}

void TestFindingKeys::leftBehindTheFieldLieTheViews()
{
    QFETCH(int, leaving);
    QFETCH(QString, text);
    fill(true, {"Anchor", "Cove"});
    part<QWidget>("m_btnTableDisplay")->setFocus();
    key(Qt::Key_F, Qt::ControlModifier);
    QVERIFY(field()->hasFocus());
    typeKeys("co");
    QCOMPARE(shown(), QStringList({"Cove"}));
    key(leaving);
    QVERIFY(viewFocus()->hasFocus());
    QCOMPARE(field()->text(), text);
    key(Qt::Key_End);
    QCOMPARE(shownTitle(), QString("Cove"));
    QVERIFY(m_played.isEmpty());
}

void TestFindingKeys::aPressOnAHeaderLeavesTheField()
{
    fill(true, {"Anchor", "Beacon"});
    showTable(true);
    openField();
    const QHeaderView* header = part<QTableView>("m_allMusicTableView")->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 10));
    QVERIFY(viewFocus()->hasFocus());
}

void TestFindingKeys::tabReachesTheField()
{
    fill(true, {"Anchor"});
    viewFocus()->setFocus();
    key(Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(part<QWidget>("m_btnTableDisplay")->hasFocus());
    key(Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(part<QWidget>("m_btnMore")->hasFocus());
    key(Qt::Key_Backtab, Qt::ShiftModifier);
    QVERIFY(field()->hasFocus());
    typeKeys("a");
    for (int i = 0; i < 3; ++i)
        key(Qt::Key_Tab);
    QVERIFY(viewFocus()->hasFocus());
    QCOMPARE(field()->text(), QString("a"));
}

/// Whichever loses its focus by being disabled: letters are then for what shows.
void TestFindingKeys::chosenButtonsDoNotLeadIntoTheField()
{
    fill(true, {"Anchor", "Anchor", ""});
    for (const char* name : {"m_btnMusicUndefined", "m_btnMusicDuplicate", "m_btnMusicAll",
                             "m_btnTableDisplay", "m_btnGridDisplay"}) {
        part<QWidget>(name)->setFocus();
        click(name);
        QVERIFY2(viewFocus()->hasFocus(), name);
    }
}

QTEST_MAIN(TestFindingKeys)
#include "tst_findingkeys.moc"
