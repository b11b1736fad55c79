// The menu of a song, by keys and by the mouse, and the card of one.
#include "keysfixture.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollArea>
#include <QScrollBar>

class TestSongMenu : public KeysFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void theMenuOpensByKeysAndByTheMouse_data() { bothModesAndDisplays(); }
    void theMenuOpensByKeysAndByTheMouse();
    void byKeysTheFirstEntryIsAtHand();
    void theMenuOpensInSight();
    void aRowOfAGroupHasTheMenuToo_data() { bothModesAndDisplays(); }
    void aRowOfAGroupHasTheMenuToo();
    void whereThereIsNoSongThereIsNoMenu();
    void fieldsHaveMenusOfTheirOwn();
    void songsArePlayed_data() { bothModesAndDisplays(); }
    void songsArePlayed();
    void textsAreCopied_data() { bothModesAndDisplays(); }
    void textsAreCopied();
    void songsAreEditedAndIdentified_data() { bothModesAndDisplays(); }
    void songsAreEditedAndIdentified();
    void aFolderThatDoesNotOpenIsTold();
    void aMenuOfSongsThatAreGoneDoesNothing();
    void keysShowTheCard_data() { bothModesAndDisplays(); }
    void keysShowTheCard();
    void whatClosesTheCard();

private:
    QMenu* menu() const
    {
        for (QMenu* each : m_window->findChildren<QMenu*>("m_songMenu"))
            if (each->isVisible())
                return each;
        return nullptr;
    }
    void choose(const QString& text) const
    {
        QMenu* const open = menu();
        QVERIFY2(open, qPrintable(text));
        for (QAction* action : open->actions())
            if (action->text().section('\t', 0, 0) == text) {
                QTest::mouseClick(open, Qt::LeftButton, Qt::NoModifier,
                                  open->actionGeometry(action).center());
                return;
            }
        QFAIL(qPrintable(text));
    }
    static void rightClick(QWidget* widget, const QPoint& place)
    {
        QTest::mouseClick(widget, Qt::RightButton, Qt::NoModifier, place);
        QContextMenuEvent asked(QContextMenuEvent::Mouse, place, widget->mapToGlobal(place));
        QApplication::sendEvent(widget, &asked);
    }
    void rightClickRow(int row) const
    {
        rightClick(view()->viewport(), view()->visualRect(view()->model()->index(row, 0)).center());
    }
    static QString cardTitle() { return card()->findChild<RetractLabel*>("m_labName")->getName(); }
};

void TestSongMenu::theMenuOpensByKeysAndByTheMouse()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon"});
    showTable(table);
    key(Qt::Key_End);
    key(Qt::Key_Menu);
    QVERIFY(menu());
    QStringList texts;
    for (const QAction* action : menu()->actions())
        if (!action->isSeparator() && action->isEnabled())
            texts.append(action->text());
    QCOMPARE(texts, QStringList({"Play\tEnter", "Edit\tF2", "Identify", "Show in folder", "Copy path",
                                 "Copy title and artist"}));
    QCOMPARE(menu()->font().pointSize(), 12);
    QVERIFY(view()->viewport()->rect().contains(view()->viewport()->mapFromGlobal(menu()->pos())));
    menu()->close();
    key(Qt::Key_F10, Qt::ShiftModifier);
    QVERIFY(menu());
    menu()->close();
    rightClickRow(0); // does what a click does before
    QVERIFY(menu());
    QCOMPARE(row(), 0);
    QCOMPARE(shownTitle(), QString("Anchor"));
    menu()->close();
}

void TestSongMenu::byKeysTheFirstEntryIsAtHand()
{
    fill(true, {"Anchor", "Beacon"});
    key(Qt::Key_End);
    key(Qt::Key_Menu);
    QCOMPARE(menu()->activeAction(), menu()->actions().first());
    QTest::keyClick(menu(), Qt::Key_Return);
    QCOMPARE(m_played, QStringList({"Beacon"}));
    QApplication::setActiveWindow(m_window.get());
    rightClickRow(0);
    QVERIFY(!menu()->activeAction());
    menu()->close();
}

/// Wherever the list was scrolled to.
void TestSongMenu::theMenuOpensInSight()
{
    QStringList titles;
    for (int i = 0; i < 40; ++i)
        titles.append("Anchor");
    fill(true, titles);
    key(Qt::Key_Home);
    view()->verticalScrollBar()->setValue(view()->verticalScrollBar()->maximum());
    key(Qt::Key_Menu);
    QVERIFY(view()->viewport()->rect().contains(view()->visualRect(view()->currentIndex())));
    QVERIFY(view()->viewport()->rect().contains(view()->viewport()->mapFromGlobal(menu()->pos())));
    menu()->close();
    view()->verticalScrollBar()->setValue(view()->verticalScrollBar()->maximum());
    key(Qt::Key_I, Qt::ControlModifier);
    QVERIFY(view()->viewport()->rect().contains(view()->visualRect(view()->currentIndex())));
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    auto* const area = group()->findChild<QScrollArea*>();
    area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
    key(Qt::Key_Menu);
    const QWidget* const row = rows().first();
    QVERIFY(menu());
    QVERIFY(area->viewport()->rect().contains({row->mapTo(area->viewport(), QPoint(0, 0)), row->size()}));
    menu()->close();
}

void TestSongMenu::aRowOfAGroupHasTheMenuToo()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Anchor", "Anchor"});
    key(Qt::Key_3, Qt::ControlModifier);
    showTable(table);
    rightClickRow(0);
    QVERIFY(menu());
    menu()->close();
    QCOMPARE(rows().size(), 3);
    rightClick(rows().at(2)->findChild<QWidget*>("m_labelMusicName"), QPoint(5, 5));
    QVERIFY(menu());
    QCOMPARE(group()->rowAtHand(), rows().at(2));
    QCOMPARE(menu()->actions().first()->text(), QString("Play")); // Enter plays the group's first song
    choose("Play");
    QVERIFY(rows().at(2)->findChild<QWidget*>("m_btnStopMusic")->isVisible());
    key(Qt::Key_Up, Qt::AltModifier);
    key(Qt::Key_Menu);
    QMusicInfo* const second = rows().at(1)->song();
    choose("Edit");
    QVERIFY(group()->isHidden());
    QCOMPARE(part<MusicDetailedInfoWidget>("m_musicDetailedWidget")->song(), second);
    QVERIFY(panel()->findChild<QLineEdit*>("m_lineTitle")->isVisible());
}

void TestSongMenu::whereThereIsNoSongThereIsNoMenu()
{
    fill(true, {"Anchor", "Anchor"});
    key(Qt::Key_Menu); // nothing is marked
    QVERIFY(!menu());
    rightClick(view()->viewport(), view()->viewport()->rect().bottomRight() - QPoint(5, 5));
    QVERIFY(!menu());
    rightClick(part<QWidget>("m_leftMusicWidget"), QPoint(20, 300));
    QVERIFY(!menu());
    key(Qt::Key_Home);
    rightClick(part<QWidget>("m_musicDetailedWidget"), QPoint(5, 5));
    QVERIFY(!menu());
}

void TestSongMenu::fieldsHaveMenusOfTheirOwn()
{
    fill(true, {"Anchor"});
    key(Qt::Key_Home);
    key(Qt::Key_F2);
    key(Qt::Key_Menu);
    QVERIFY(!menu());
}

void TestSongMenu::songsArePlayed()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon", "Beacon"});
    showTable(table);
    key(Qt::Key_Home);
    key(Qt::Key_Menu);
    choose("Play");
    QCOMPARE(m_played.size(), 1);
    key(Qt::Key_3, Qt::ControlModifier);
    rightClickRow(0);
    choose("Play");
    QCOMPARE(m_played.size(), 2);
    QCOMPARE(m_played.last(), QString("Beacon"));
}

void TestSongMenu::textsAreCopied()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon"});
    showTable(table);
    key(Qt::Key_End);
    const QMusicInfo* const song = part<MusicDetailedInfoWidget>("m_musicDetailedWidget")->song();
    key(Qt::Key_Menu);
    choose("Copy path");
    QCOMPARE(QApplication::clipboard()->text(), QDir::toNativeSeparators(SongFields::audioPath(song)));
    QVERIFY(QFile::exists(QApplication::clipboard()->text()));
    key(Qt::Key_Menu);
    choose("Copy title and artist");
    QCOMPARE(QApplication::clipboard()->text(), "Beacon - " + SongFields::artist(song));
}

void TestSongMenu::songsAreEditedAndIdentified()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    qputenv("MELODRIFT_ACOUSTID_KEY", "");
    fill(local, {"Anchor", "Beacon"});
    showTable(table);
    key(Qt::Key_End);
    key(Qt::Key_Menu);
    choose("Edit");
    auto* title = panel()->findChild<QLineEdit*>("m_lineTitle");
    QVERIFY(title->isVisible());
    QCOMPARE(title->text(), QString("Beacon"));
    rightClickRow(0);
    QCOMPARE(shownTitle(), QString("Anchor"));
    QVERIFY(title->isHidden());
    choose("Identify");
    QVERIFY(part<MusicDetailedInfoWidget>("m_musicDetailedWidget")->isIdentifying());
    rightClickRow(1); // no menu meanwhile
    QVERIFY(!menu());
    clickIn(panel(), "m_btnCancel");
}

void TestSongMenu::aFolderThatDoesNotOpenIsTold()
{
    fill(true, {"Anchor"});
    const QByteArray programs = qgetenv("PATH");
    qputenv("PATH", "");
    key(Qt::Key_Home);
    key(Qt::Key_Menu);
    choose("Show in folder");
    qputenv("PATH", programs);
    QVERIFY(!told().isEmpty());
}

void TestSongMenu::aMenuOfSongsThatAreGoneDoesNothing()
{
    fill(true, {"Anchor", "Beacon"});
    QApplication::clipboard()->setText("before");
    key(Qt::Key_Home);
    key(Qt::Key_Menu);
    part<CenterWidget>("m_middleMusicWidget")->SwitchToLocalCleanModel();
    choose("Copy path");
    QCOMPARE(QApplication::clipboard()->text(), QString("before"));
}

void TestSongMenu::keysShowTheCard()
{
    QFETCH(bool, local);
    QFETCH(bool, table);
    fill(local, {"Anchor", "Beacon", "Beacon"});
    showTable(table);
    key(Qt::Key_I, Qt::ControlModifier); // nothing is marked
    QVERIFY(!card());
    key(Qt::Key_Home);
    key(Qt::Key_I, Qt::ControlModifier);
    QVERIFY(card());
    QCOMPARE(cardTitle(), QString("Anchor"));
    QApplication::setActiveWindow(m_window.get());
    key(Qt::Key_3, Qt::ControlModifier); // a change of view closes it
    QVERIFY(!card());
    key(Qt::Key_Home);
    key(Qt::Key_Down, Qt::AltModifier);
    key(Qt::Key_I, Qt::ControlModifier);
    QVERIFY(card());
    QCOMPARE(card()->parentWidget(), rows().at(1));
    QCOMPARE(cardTitle(), QString("Beacon"));
    QApplication::setActiveWindow(m_window.get());
    key(Qt::Key_1, Qt::ControlModifier);
    QVERIFY(!card());
}

void TestSongMenu::whatClosesTheCard()
{
    fill(true, {"Anchor", "Anchor"});
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    const auto show = [this] {
        QTest::mouseClick(rows().at(0)->findChild<QImageButton*>("m_btnShowInfo"), Qt::LeftButton);
        QVERIFY(card());
    };
    show();
    QTest::mouseClick(card(), Qt::LeftButton, Qt::NoModifier, QPoint(150, 190));
    QVERIFY(!card());
    show();
    QTest::mouseClick(m_window.get(), Qt::LeftButton, Qt::NoModifier, QPoint(450, 90));
    QVERIFY(!card());
    show();
    QTest::keyClick(card(), Qt::Key_Escape);
    QVERIFY(!card());
    show();
    QApplication::setActiveWindow(m_window.get());
    key(Qt::Key_Escape); // wherever it is pressed
    QVERIFY(!card());
    show();
    key(Qt::Key_Escape);
    QVERIFY(group()->isVisible()); // and does nothing else
    show();
    click("m_btnTableDisplay");
    click("m_btnMusicAll");
    QVERIFY(!card());
}

QTEST_MAIN(TestSongMenu)
#include "tst_songmenu.moc"
