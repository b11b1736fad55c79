#include "common/qimagebutton.h"
#include "navigationwidget.h"

#include <QSignalSpy>
#include <QtTest>

class TestNavigationWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_pane.reset(); }

    void showsCounts();
    void aClickChoosesAndTells_data();
    void aClickChoosesAndTells();
    void theChosenButtonDoesNothing();
    void selectingAllEmitsNothing();
    void aBanDisablesAllAndLiftingItEnablesAll();
    void theLowerButtonsCanBeHidden();
    void buttonsStackWithoutGaps();
    void thePaneHasItsColours();

private:
    QImageButton* button(const char* name) const { return m_pane->findChild<QImageButton*>(name); }
    QString caption(const char* name) const { return button(name)->btnText(); }

    std::unique_ptr<NavigationWidget> m_pane;
};

void TestNavigationWidget::init()
{
    m_pane = std::make_unique<NavigationWidget>();
    m_pane->resize(200, 585);
    m_pane->show();
}

void TestNavigationWidget::showsCounts()
{
    QCOMPARE(caption("m_btnMusicAll"), QString("All songs(0)"));
    QCOMPARE(caption("m_btnMusicUndefined"), QString("Undefined songs(0)"));
    QCOMPARE(caption("m_btnMusicDuplicate"), QString("Duplicate songs(0)"));
    m_pane->setMusicCount(5, 2, 3);
    QCOMPARE(caption("m_btnMusicAll"), QString("All songs(5)"));
    QCOMPARE(caption("m_btnMusicUndefined"), QString("Undefined songs(2)"));
    QCOMPARE(caption("m_btnMusicDuplicate"), QString("Duplicate songs(3)"));
    m_pane->setUndefindSongsCount(0);
    QCOMPARE(caption("m_btnMusicUndefined"), QString("Undefined songs(0)"));
    m_pane->setDuplicateSongsCount(-4);
    QCOMPARE(caption("m_btnMusicDuplicate"), QString("Duplicate songs(-4)"));
}

void TestNavigationWidget::aClickChoosesAndTells_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("signal");
    QTest::newRow("all") << "m_btnMusicAll" << SIGNAL(emitMusicAll());
    QTest::newRow("undefined") << "m_btnMusicUndefined" << SIGNAL(emitMusicUndefined());
    QTest::newRow("duplicate") << "m_btnMusicDuplicate" << SIGNAL(emitMusicDuplicate());
}

void TestNavigationWidget::aClickChoosesAndTells()
{
    QFETCH(QString, name);
    QFETCH(QString, signal);
    QSignalSpy chosen(m_pane.get(), qPrintable(signal));
    QSignalSpy hidden(m_pane.get(), SIGNAL(emitHiddenMusicDetailedWidget()));
    QTest::mouseClick(m_pane->findChild<QImageButton*>(name), Qt::LeftButton);
    QCOMPARE(chosen.count(), 1);
    QCOMPARE(hidden.count(), 1);
    for (const QImageButton* each : m_pane->findChildren<QImageButton*>())
        QCOMPARE(each->isEnabled(), each->objectName() != name);
}

void TestNavigationWidget::theChosenButtonDoesNothing()
{
    QTest::mouseClick(button("m_btnMusicAll"), Qt::LeftButton);
    QSignalSpy chosen(m_pane.get(), SIGNAL(emitMusicAll()));
    QTest::mouseClick(button("m_btnMusicAll"), Qt::LeftButton);
    QCOMPARE(chosen.count(), 0);
}

void TestNavigationWidget::selectingAllEmitsNothing()
{
    QSignalSpy chosen(m_pane.get(), SIGNAL(emitMusicAll()));
    m_pane->OnBtnMusicDuplicate();
    m_pane->SlotSetBtnState();
    QVERIFY(!button("m_btnMusicAll")->isEnabled());
    m_pane->OnBtnMusicDuplicate();
    m_pane->OnLeftWidgetBtnState();
    QVERIFY(!button("m_btnMusicAll")->isEnabled());
    QVERIFY(button("m_btnMusicDuplicate")->isEnabled());
    QCOMPARE(chosen.count(), 0);
}

void TestNavigationWidget::aBanDisablesAllAndLiftingItEnablesAll()
{
    m_pane->OnBtnMusicUndefined();
    for (const bool forbid : {true, false}) {
        m_pane->SlotForbidClickingBtn(forbid);
        for (const QImageButton* each : m_pane->findChildren<QImageButton*>())
            QCOMPARE(each->isEnabled(), !forbid);
    }
}

void TestNavigationWidget::theLowerButtonsCanBeHidden()
{
    m_pane->setBtnHidden(true);
    QVERIFY(button("m_btnMusicUndefined")->isHidden());
    QVERIFY(button("m_btnMusicDuplicate")->isHidden());
    QVERIFY(!button("m_btnMusicAll")->isHidden());
    m_pane->setBtnHidden(false);
    QVERIFY(!button("m_btnMusicDuplicate")->isHidden());
}

void TestNavigationWidget::buttonsStackWithoutGaps()
{
    m_pane->grab();
    const int height = button("m_btnMusicAll")->height();
    QCOMPARE(button("m_btnMusicAll")->pos(), QPoint(0, 0));
    QCOMPARE(button("m_btnMusicUndefined")->pos(), QPoint(0, height));
    QCOMPARE(button("m_btnMusicDuplicate")->pos(), QPoint(0, 2 * height));
}

void TestNavigationWidget::thePaneHasItsColours()
{
    const QImage shown = m_pane->grab().toImage();
    QCOMPARE(shown.pixel(50, 400), qRgb(244, 244, 244));
    QCOMPARE(shown.pixel(199, 400), qRgb(170, 170, 170));
    QCOMPARE(shown.pixel(198, 400), qRgb(244, 244, 244));
}

QTEST_MAIN(TestNavigationWidget)
#include "tst_navigationwidget.moc"
