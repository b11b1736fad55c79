// The card of a song over the window: what closes it, and what goes on behind it.
#include "keysfixture.h"

class TestSongCard : public KeysFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void aClickElsewhereClosesIt();
    void escapeClosesIt();
    void anotherViewClosesIt_data();
    void anotherViewClosesIt();
    void keysGoOnBehindIt();
    void theKeyThatOpenedItMayBeHeld();

private:
    void openOne() const
    {
        key(Qt::Key_I, Qt::ControlModifier);
        QVERIFY(card());
        QVERIFY(QTest::qWaitForWindowExposed(card(), patience));
    }
};

void TestSongCard::aClickElsewhereClosesIt()
{
    fill(true, {"Anchor", "Beacon"});
    clickRow("m_allMusicListView", 0);
    openOne();
    clickRow("m_allMusicListView", 1);
    QVERIFY(!card());
    QCOMPARE(markedTitle(), QString("Beacon")); // the click does what it does
    openOne();
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(300, 90));
    QVERIFY(!card());
}

/// In the card and in the window.
void TestSongCard::escapeClosesIt()
{
    fill(true, {"Anchor"});
    clickRow("m_allMusicListView", 0);
    openOne();
    QTest::keyClick(card()->windowHandle(), Qt::Key_Escape);
    QVERIFY(!card());
    openOne();
    key(Qt::Key_Escape);
    QVERIFY(!card());
    QVERIFY(panel()->isVisible());
}

void TestSongCard::anotherViewClosesIt_data()
{
    QTest::addColumn<QString>("slot");
    for (const char* slot : {"OnBtnTableView", "slotShowAllmusicView", "slotShowUndefineMusicView"})
        QTest::newRow(slot) << slot;
}

/// Whatever has it shown, and whether the card is a song's or of a row of a group.
void TestSongCard::anotherViewClosesIt()
{
    QFETCH(QString, slot);
    fill(true, {"Anchor", "Anchor"});
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    openOne();
    QMetaObject::invokeMethod(part<CenterWidget>("m_middleMusicWidget"), qPrintable(slot));
    QVERIFY(!card());
    click("m_btnMusicAll");
    clickShown(0);
    openOne();
    key(Qt::Key_3, Qt::ControlModifier);
    QVERIFY(!card());
    QVERIFY(view()->objectName().startsWith("m_dup"));
}

/// Whether the window system made it the active window or not.
void TestSongCard::keysGoOnBehindIt()
{
    fill(true, {"Anchor", "Beacon", "Cape"});
    clickRow("m_allMusicListView", 0);
    openOne();
    QTest::keyClick(card()->windowHandle(), Qt::Key_Shift);
    QVERIFY(card());
    QTest::keyClick(card()->windowHandle(), Qt::Key_Right);
    QVERIFY(!card());
    QCOMPARE(markedTitle(), QString("Beacon"));
    openOne();
    key(Qt::Key_Right);
    QVERIFY(!card());
    QCOMPARE(markedTitle(), QString("Cape"));
    openOne();
    QTest::keyClick(card()->windowHandle(), Qt::Key_3, Qt::ControlModifier);
    QVERIFY(!card());
    QVERIFY(view()->objectName().startsWith("m_dup"));
}

void TestSongCard::theKeyThatOpenedItMayBeHeld()
{
    fill(true, {"Anchor"});
    clickRow("m_allMusicListView", 0);
    openOne();
    QKeyEvent held(QEvent::KeyPress, Qt::Key_I, Qt::ControlModifier, QString(), true);
    QApplication::sendEvent(m_window->focusWidget(), &held);
    QVERIFY(card());
}

QTEST_MAIN(TestSongCard)
#include "tst_songcard.moc"
