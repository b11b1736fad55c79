// Where the playback window opens, and what lies above it.
#include "common/screenplace.h"
#include "keysfixture.h"

#include <QDialog>

class TestPlayerPlace : public KeysFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void coversNothingOfImportance_data();
    void coversNothingOfImportance();
    void opensClearOfThePanel();
    void opensAnewWhereTheWindowIs();
    void staysWhereTheUserMovedIt();
    void dialogsLieAboveIt();
    void takesItsKeys();

private:
    static PlaySongWidget* player() { return findWindow<PlaySongWidget>(); }
    QRect column() const
    {
        const QWidget* const widget = part<QWidget>("verticalLayoutWidget");
        return {widget->mapToGlobal(QPoint(0, 0)), widget->size()};
    }
    void play(int row)
    {
        clickRow("m_allMusicListView", row, true);
        QVERIFY(player()->isVisible());
    }
};

void TestPlayerPlace::coversNothingOfImportance_data()
{
    QTest::addColumn<QRect>("window");
    QTest::addColumn<QRect>("screen");
    QTest::addColumn<bool>("clearOfDialogs");
    const QRect large(0, 0, 1920, 1080);
    QTest::newRow("beside") << QRect(0, 0, 1000, 700) << large << true;
    QTest::newRow("right") << QRect(700, 100, 1120, 713) << large << true;
    QTest::newRow("middle") << QRect(400, 180, 1120, 713) << large << true;
    QTest::newRow("maximised") << large << large << true;
    QTest::newRow("dense") << QRect(0, 0, 1440, 900) << QRect(0, 0, 1440, 900) << false;
    QTest::newRow("another screen") << QRect(1920, 0, 1280, 1024) << QRect(1920, 0, 1280, 1024) << true;
    QTest::newRow("small screen") << QRect(0, 0, 1000, 700) << QRect(0, 0, 1000, 700) << false;
}

/// The panel at the right matters most, then questions in the middle.
void TestPlayerPlace::coversNothingOfImportance()
{
    QFETCH(QRect, window);
    QFETCH(QRect, screen);
    QFETCH(bool, clearOfDialogs);
    const QSize size(562, 375);
    const QRect panel(window.right() - 329, window.top() + 102, 330, window.height() - 128);
    QRect dialog(0, 0, 442, 180);
    dialog.moveCenter(window.center());
    const QRect place(ScreenPlace::besideClearOf({panel, dialog}, window, size, screen), size);
    QVERIFY(screen.contains(place));
    QVERIFY(!place.intersects(panel));
    QCOMPARE(!place.intersects(dialog), clearOfDialogs);
}

void TestPlayerPlace::opensClearOfThePanel()
{
    fill(true, {"Anchor", "Beacon"});
    m_window->setGeometry(0, 0, 1000, 700); // wider than the screen of this test
    play(0);
    QVERIFY(!player()->frameGeometry().intersects(column()));
}

/// Unless it is open.
void TestPlayerPlace::opensAnewWhereTheWindowIs()
{
    fill(true, {"Anchor", "Beacon"});
    play(0);
    const QPoint first = player()->pos();
    m_window->move(column().topLeft() - QPoint(600, 40));
    play(1);
    QCOMPARE(player()->pos(), first);
    player()->close();
    m_window->move(0, 0);
    play(0);
    QVERIFY(!player()->frameGeometry().intersects(column()));
}

void TestPlayerPlace::staysWhereTheUserMovedIt()
{
    fill(true, {"Anchor"});
    play(0);
    const QPoint own(200, 150); // over the window
    player()->move(own);
    player()->close();
    play(0);
    QCOMPARE(player()->pos(), own);
}

/// Wherever that is.
void TestPlayerPlace::dialogsLieAboveIt()
{
    fill(true, {"Anchor", "Anchor"});
    click("m_btnMusicDuplicate");
    clickRow("m_dupMusicListView", 0);
    bool above = true;
    for (const bool open : {false, true}) {
        if (open)
            rows().first()->SlotOnBtnPlay();
        m_dialogs->expect([&](QWidget* dialog) {
            above = dialog->windowFlags().testFlag(Qt::WindowStaysOnTopHint);
            QCOMPARE(dialog->windowHandle()->transientParent(), m_window->windowHandle());
            dialog->close();
        });
        clickIn(group(), "m_btnClearOne");
        QCOMPARE(above, open);
    }
}

void TestPlayerPlace::takesItsKeys()
{
    fill(true, {"Anchor"});
    play(0);
    QVERIFY(QTest::qWaitForWindowExposed(player(), patience));
    const auto* const pause = player()->findChild<QWidget*>("m_btnPause");
    QVERIFY(pause->isVisible());
    QTest::keyClick(player()->windowHandle(), Qt::Key_Space);
    QVERIFY(pause->isHidden());
    QTest::keyClick(player()->windowHandle(), Qt::Key_Escape);
    QVERIFY(player()->isHidden());
    play(0);
    QApplication::setActiveWindow(player());
    QTest::keyClick(player()->windowHandle(), Qt::Key_Q, Qt::ControlModifier);
    QVERIFY(!m_window->isVisible());
}

QTEST_MAIN(TestPlayerPlace)
#include "tst_playerplace.moc"
