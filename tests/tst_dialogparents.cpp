// Which window a dialog belongs to where the desktop places it.
#include "dialogparents.h"

#include <QDialog>
#include <QMainWindow>
#include <QtTest>
#include <QWindow>

class TestDialogParents : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCoreApplication::instance()->installEventFilter(&m_parents); }

    void dialogsBelongToTheWindow();
    void dialogsOfAModalDialogBelongToThat();
    void windowsBesideBelongToTheWindowAsWell();
    void othersBelongToNone();

private:
    DialogParents m_parents;
};

void TestDialogParents::dialogsBelongToTheWindow()
{
    QMainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QDialog dialog;
    dialog.show();
    QCOMPARE(dialog.windowHandle()->transientParent(), window.windowHandle());
}

void TestDialogParents::dialogsOfAModalDialogBelongToThat()
{
    QMainWindow window;
    window.show();
    QDialog first;
    first.setModal(true);
    first.show();
    QDialog second;
    second.setModal(true);
    second.show();
    QCOMPARE(first.windowHandle()->transientParent(), window.windowHandle());
    QCOMPARE(second.windowHandle()->transientParent(), first.windowHandle());
}

void TestDialogParents::windowsBesideBelongToTheWindowAsWell()
{
    QMainWindow window;
    window.show();
    QWidget beside;
    beside.show();
    QVERIFY(QTest::qWaitForWindowExposed(&beside));
    QDialog dialog;
    dialog.show();
    QCOMPARE(beside.windowHandle()->transientParent(), window.windowHandle());
    QCOMPARE(dialog.windowHandle()->transientParent(), window.windowHandle());
}

void TestDialogParents::othersBelongToNone()
{
    QDialog alone;
    alone.show();
    QVERIFY(!alone.windowHandle()->transientParent());
    QMainWindow window;
    window.show();
    QVERIFY(!window.windowHandle()->transientParent());
}

QTEST_MAIN(TestDialogParents)
#include "tst_dialogparents.moc"
