// Where the focus of the keyboard is in the window, and how it is to be seen.
#include "common/focusmark.h"
#include "common/messagedialog.h"
#include "common/style.h"
#include "keysfixture.h"
#include "playsongwidget.h"

#include <QScrollArea>
#include <QScrollBar>

class TestFocus : public KeysFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }
    void init() { prepareFoot(); }
    void cleanup() { clearFoot(); }

    void viewsTakeNone();
    void tabGoesFromTopToBottom();
    void tabComesToTheFootLast();
    void aChosenRowOfNavigationGivesItToTheView();
    void aDisplayButtonGivesItToTheView();
    void aPressOnAViewTakesIt();
    void whatHasItIsOutlined_data();
    void whatHasItIsOutlined();
    void fieldsHaveARingOfTheirOwn_data();
    void fieldsHaveARingOfTheirOwn();
    void theOutlineMovesNothing();
    void theOutlineFollowsARowThatScrolls();
    void forTheMouseThereIsNoOutline();
    void dialogsHaveTheOutlineToo();
    void theRowAtHandHasABar();
    void thePlaybackWindowTakesItsKeys();

private:
    static FocusMark* markOf(const QWidget* window) { return window->findChild<FocusMark*>(); }
    QRect outline() const { return markOf(m_window.get())->geometry(); }
    QRect placeOf(const QWidget* widget) const
    {
        return {widget->mapTo(m_window.get(), QPoint(0, 0)), widget->size()};
    }
};

void TestFocus::viewsTakeNone()
{
    fill(true, {"Anchor", "Anchor"});
    for (const char* name :
         {"m_allMusicListView", "m_allMusicTableView", "m_dupMusicListView", "m_dupMusicTableView"})
        QCOMPARE(part<QWidget>(name)->focusPolicy(), Qt::NoFocus);
    for (int i = 0; i < 40; ++i) {
        key(Qt::Key_Tab);
        const QWidget* const focus = QApplication::focusWidget();
        QVERIFY(focus);
        QVERIFY(!focus->inherits("QAbstractScrollArea"));
    }
}

/// And from left to right, through the rows of a group before what clears it.
void TestFocus::tabGoesFromTopToBottom()
{
    fill(true, {"Anchor", "Anchor"});
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    const QStringList row = {"m_btnIsDeleta", "m_btnPlayMusic", "m_btnShowInfo", "m_btnOpenPath"};
    const QStringList wanted =
        QStringList({"m_btnStarScan", "m_btnLocalClean", "m_btnMusicAll", "m_btnMusicUndefined",
                     "m_findField", "m_btnMore", "m_btnTableDisplay", "m_viewFocus"}) +
        row + row + QStringList({"m_btnClearOne", "m_btnClearAll"});
    part<QWidget>("m_btnStarScan")->setFocus();
    const auto goOn = [this](const QStringList& names) {
        for (const QString& name : names) {
            QCOMPARE(m_window->focusWidget()->objectName(), name);
            key(Qt::Key_Tab);
        }
    };
    goOn(wanted + wanted);
}

/// To an offer alone, and to links before it; also once there are rows of another group.
void TestFocus::tabComesToTheFootLast()
{
    fill(true, {"Anchor", "Anchor"});
    const auto captions = [this] {
        QStringList texts;
        part<QWidget>("m_btnClearAll")->setFocus();
        key(Qt::Key_Tab);
        for (int i = 0; i < 9 && !part<QWidget>("m_btnStarScan")->hasFocus(); ++i, key(Qt::Key_Tab))
            texts.append(qobject_cast<QAbstractButton*>(m_window->focusWidget())->text());
        return texts;
    };
    line()->offer({"Undo", [] {}});
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    QCOMPARE(captions(), QStringList("Undo"));
    line()->tell({"Told", false, {{"One", [] {}}, {"Two", [] {}}}});
    QCOMPARE(captions(), QStringList({"One", "Two", "Undo"}));
    key(Qt::Key_1, Qt::ControlModifier);
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    QCOMPARE(captions(), QStringList({"One", "Two", "Undo"}));
    line()->clear();
    QCOMPARE(captions(), QStringList("Undo"));
}

/// By keys and by the mouse: the next Space opens no other view.
void TestFocus::aChosenRowOfNavigationGivesItToTheView()
{
    fill(true, {"Anchor", "Anchor", ""});
    const auto* const focus = part<QWidget>("m_viewFocus");
    part<QWidget>("m_btnMusicUndefined")->setFocus(Qt::TabFocusReason);
    key(Qt::Key_Space);
    QVERIFY(focus->hasFocus());
    key(Qt::Key_Space);
    QVERIFY(!part<QWidget>("m_btnMusicUndefined")->isEnabled());
    click("m_btnMusicDuplicate");
    QVERIFY(focus->hasFocus());
    QVERIFY(!part<QWidget>("m_btnMusicDuplicate")->isEnabled());
}

void TestFocus::aDisplayButtonGivesItToTheView()
{
    fill(true, {"Anchor"});
    part<QWidget>("m_btnTableDisplay")->setFocus(Qt::TabFocusReason);
    key(Qt::Key_Space);
    QVERIFY(part<QWidget>("m_viewFocus")->hasFocus());
    key(Qt::Key_Space);
    QCOMPARE(view()->objectName(), QString("m_allMusicTableView"));
}

void TestFocus::aPressOnAViewTakesIt()
{
    fill(true, {"Anchor", "Beacon"});
    part<QWidget>("m_btnStarScan")->setFocus();
    KeysFixture::clickRow("m_allMusicListView", 0);
    QVERIFY(part<QWidget>("m_viewFocus")->hasFocus());
    QCOMPARE(part<QWidget>("m_viewFocus")->geometry(), view()->geometry());
}

void TestFocus::whatHasItIsOutlined_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"m_viewFocus", "m_btnStarScan", "m_btnLocalClean", "m_btnMusicDuplicate",
                             "m_btnTableDisplay", "m_comboGenre", "m_btnApply", "m_btnCancel"})
        QTest::newRow(name) << name;
}

void TestFocus::whatHasItIsOutlined()
{
    QFETCH(QString, name);
    fill(true, {"Anchor"});
    key(Qt::Key_Home);
    key(Qt::Key_F2);
    auto* widget = m_window->findChild<QWidget*>(name);
    widget->setFocus();
    QVERIFY(markOf(m_window.get())->isVisible());
    QVERIFY(markOf(m_window.get())->testAttribute(Qt::WA_TransparentForMouseEvents));
    QCOMPARE(outline(), placeOf(widget).adjusted(-3, -3, 3, 3) & m_window->rect());
    const QImage picture = m_window->grab().toImage();
    const QPoint middle(outline().center().x(), outline().bottom());
    QCOMPARE(QColor(picture.pixel(middle * picture.devicePixelRatio())), Style::editorFocus);
}

void TestFocus::fieldsHaveARingOfTheirOwn_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"m_findField", "m_lineTitle", "m_lineYear"})
        QTest::newRow(name) << name;
}

/// One, and no outline around it.
void TestFocus::fieldsHaveARingOfTheirOwn()
{
    QFETCH(QString, name);
    fill(true, {"Anchor"});
    key(Qt::Key_Home);
    key(Qt::Key_F2);
    auto* field = m_window->findChild<QLineEdit*>(name);
    field->setFocus();
    key(Qt::Key_End);
    const QRect place = placeOf(field).adjusted(0, 0, 0, 4);
    const QImage picture = m_window->grab().toImage();
    const auto isBlue = [&](int y) {
        return QColor(picture.pixel(QPoint(place.center().x(), y) * picture.devicePixelRatio())) ==
               Style::editorFocus;
    };
    QList<int> blue;
    for (int y = place.center().y(); y <= place.bottom(); ++y)
        if (isBlue(y))
            blue.append(y);
    QCOMPARE(blue.size(), 2);
    QCOMPARE(blue.last() - blue.first(), 1);
    QVERIFY(!markOf(m_window.get())->isVisible());
}

void TestFocus::theOutlineMovesNothing()
{
    fill(true, {"Anchor"});
    const auto places = [this] {
        QList<QRect> found;
        for (const QWidget* each : m_window->findChildren<QWidget*>())
            if (each->isVisible() && !qobject_cast<const FocusMark*>(each))
                found.append(placeOf(each));
        return found;
    };
    key(Qt::Key_Home);
    const QList<QRect> before = places();
    for (int i = 0; i < 12; ++i) {
        key(Qt::Key_Tab);
        QCOMPARE(places(), before);
    }
}

void TestFocus::theOutlineFollowsARowThatScrolls()
{
    QStringList titles;
    for (int i = 0; i < 9; ++i)
        titles.append("Anchor");
    fill(true, titles);
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    auto* const button = rows().at(0)->findChild<QWidget*>("m_btnPlayMusic");
    button->setFocus();
    QCOMPARE(outline(), placeOf(button).adjusted(-3, -3, 3, 3));
    auto* const bar = group()->findChild<QScrollArea*>()->verticalScrollBar();
    bar->setValue(20);
    QCOMPARE(outline(), placeOf(button).adjusted(-3, -3, 3, 3));
    bar->setValue(bar->maximum());
    QVERIFY(!markOf(m_window.get())->isVisible());
    key(Qt::Key_Down, Qt::AltModifier); // which brings its row into sight
    QVERIFY(bar->value() <= 100);
}

void TestFocus::forTheMouseThereIsNoOutline()
{
    fill(true, {"Anchor"});
    key(Qt::Key_Home);
    QVERIFY(markOf(m_window.get())->isVisible());
    KeysFixture::clickRow("m_allMusicListView", 0);
    QVERIFY(!markOf(m_window.get())->isVisible());
    for (const int modifier : {Qt::Key_Control, Qt::Key_Shift, Qt::Key_Alt})
        key(modifier);
    QVERIFY(!markOf(m_window.get())->isVisible());
    key(Qt::Key_Home);
    QVERIFY(markOf(m_window.get())->isVisible());
}

void TestFocus::dialogsHaveTheOutlineToo()
{
    MessageDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog, patience));
    QTest::keyClick(&dialog, Qt::Key_Tab);
    QVERIFY(dialog.focusWidget());
    QVERIFY(markOf(&dialog)->isVisible());
    QCOMPARE(markOf(&dialog)->geometry(),
             dialog.focusWidget()->geometry().adjusted(-3, -3, 3, 3) & dialog.rect());
}

void TestFocus::theRowAtHandHasABar()
{
    fill(true, {"Anchor", "Anchor"});
    key(Qt::Key_3, Qt::ControlModifier);
    key(Qt::Key_Home);
    const auto edge = [this](int row) { return QColor(rows().at(row)->grab().toImage().pixel(1, 40)); };
    QCOMPARE(edge(0), Style::markChosen);
    QCOMPARE(edge(1), Style::groupRow);
    key(Qt::Key_Down, Qt::AltModifier);
    QCOMPARE(edge(0), Style::groupRow);
    QCOMPARE(edge(1), Style::markChosen);
    KeysFixture::clickRow("m_dupMusicListView", 0);
    QCOMPARE(edge(0), Style::groupRow); // who works by the mouse needs none
    QCOMPARE(edge(1), Style::groupRow);
}

void TestFocus::thePlaybackWindowTakesItsKeys()
{
    fill(true, {"Anchor"});
    key(Qt::Key_Home);
    key(Qt::Key_Return);
    auto* const player = findWindow<PlaySongWidget>();
    QVERIFY(player && player->isVisible());
    player->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(player, patience));
    const auto* const pause = player->findChild<QWidget*>("m_btnPause");
    QVERIFY(pause->isVisible());
    QTest::keyClick(player->windowHandle(), Qt::Key_Space);
    QVERIFY(pause->isHidden());
    QTest::keyClick(player->windowHandle(), Qt::Key_Escape);
    QVERIFY(player->isHidden());
    QVERIFY(m_window->isVisible());
    player->show();
    QVERIFY(QTest::qWaitForWindowActive(player, patience));
    QTest::keyClick(player, Qt::Key_Q, Qt::ControlModifier);
    QTRY_VERIFY(!m_window->isVisible());
}

QTEST_MAIN(TestFocus)
#include "tst_focus.moc"
