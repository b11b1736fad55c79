#include "sliderpictures.h"

#include <QSignalSpy>
#include <QtTest>

using namespace SliderPictures;

namespace {
/// Moves the pointer as far as a pressed mouse would, `by` points from where `widget` is now.
void drag(QWidget& widget, const QPoint& from, int by)
{
    const QPoint start = widget.mapToGlobal(from);
    const QPoint end = start + QPoint(by, 0);
    const auto send = [&widget](QEvent::Type type, const QPoint& global, Qt::MouseButton button,
                                Qt::MouseButtons buttons) {
        QMouseEvent event(type, widget.mapFromGlobal(global), global, global, button, buttons,
                          Qt::NoModifier);
        QApplication::sendEvent(&widget, &event);
    };
    send(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, end, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, end, Qt::LeftButton, Qt::NoButton);
}

void enter(QWidget& widget)
{
    QEvent event(QEvent::Enter);
    QApplication::sendEvent(&widget, &event);
}

void leave(QWidget& widget)
{
    QEvent event(QEvent::Leave);
    QApplication::sendEvent(&widget, &event);
}
} // namespace

class TestQSliderCtrl : public QObject
{
    Q_OBJECT

private slots:
    void theTrackGivesTheSize();
    void theHandleWidensTheSliderByTheFormerOne();
    void theMiddleOfTheRangeStandsInTheMiddle();
    void valuesOutsideTheRangeStandAtTheLeftEnd();
    void anEmptyRangeStandsAtTheLeftEnd();
    void theValueIsCountedFromTheMinimum();
    void settingAValueTellsNobody();

    void aClickOnTheTrackTakesTheHandleThere();
    void aClickNearTheEndsDoesNothing();
    void draggingTheTrackStopsAtTheEnds();
    void theTrackDragsOnlyWhileTheHandleIsHeld();
    void draggingTheHandleSnapsToTheLeftEnd();
    void withoutAHandleTheWholeTrackDrags();
    void aSliderAsWideAsItsHandleTellsZero();
    void aDisabledMoveChangesNothing();

    void theHandleLooksLikeAnImageButton();
    void theHandleCanHideUntilThePointerComes();

private:
    QString path(const char* name) const { return m_pictures.path(name); }
    void dress(qSliderCtrl& slider) const { m_pictures.dress(slider); }

    Folder m_pictures;
};

void TestQSliderCtrl::theTrackGivesTheSize()
{
    qSliderCtrl slider;
    QVERIFY(slider.setBottomImage(path("track.png")));
    QCOMPARE(slider.size(), QSize(100, 20));
    QVERIFY(slider.setBottomImage(path("high.png")));
    QCOMPARE(slider.size(), QSize(100, 30));
    slider.setWidth(460);
    QCOMPARE(slider.size(), QSize(460, 20));
}

void TestQSliderCtrl::theHandleWidensTheSliderByTheFormerOne()
{
    qSliderCtrl slider;
    slider.setBottomImage(path("track.png"));
    QVERIFY(slider.setBtnImage(path("handle.png")));
    QCOMPARE(slider.size(), QSize(100, 20));
    QCOMPARE(handleOf(slider)->geometry(), QRect(0, 4, handleWidth, 12));
    QVERIFY(slider.setBtnImage(path("handle.png")));
    QCOMPARE(slider.size(), QSize(100 + handleWidth, 20));
    QCOMPARE(slider.findChildren<QSliderCtrlBtn*>().size(), 1);
}

void TestQSliderCtrl::theMiddleOfTheRangeStandsInTheMiddle()
{
    qSliderCtrl slider;
    dress(slider);
    QCOMPARE(slider.width(), 200);
    slider.setValue(5000);
    QCOMPARE(handleOf(slider)->x(), 100 - half);
    QCOMPARE(slider.getValue(), 5000.0F);
    slider.setValue(10000);
    QCOMPARE(handleOf(slider)->x(), 200 - half); // half of it over the edge
    slider.setValue(100);
    QCOMPARE(handleOf(slider)->x(), 0);
}

void TestQSliderCtrl::valuesOutsideTheRangeStandAtTheLeftEnd()
{
    qSliderCtrl slider;
    dress(slider);
    for (const int value : {10001, -1}) {
        slider.setValue(5000);
        slider.setValue(value);
        QCOMPARE(handleOf(slider)->x(), 0);
        QCOMPARE(slider.getValue(), 0.0F);
    }
}

void TestQSliderCtrl::anEmptyRangeStandsAtTheLeftEnd()
{
    qSliderCtrl slider;
    dress(slider);
    slider.setValue(5000);
    slider.setValueRange(7, 7);
    slider.setValue(7);
    QCOMPARE(handleOf(slider)->x(), 0);
    QCOMPARE(slider.getValue(), 0.0F);
}

void TestQSliderCtrl::theValueIsCountedFromTheMinimum()
{
    qSliderCtrl slider;
    dress(slider);
    slider.setValueRange(100, 300);
    slider.setValue(250);
    QCOMPARE(handleOf(slider)->x(), 150 - half);
    QCOMPARE(slider.getValue(), 150.0F);
    // What the user does is not in it.
    QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(50, 10));
    QCOMPARE(slider.getValue(), 150.0F);
    slider.setValueRange(std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max());
    slider.setValue(0);
    QCOMPARE(handleOf(slider)->x(), 100 - half);
}

void TestQSliderCtrl::settingAValueTellsNobody()
{
    qSliderCtrl slider;
    dress(slider);
    QSignalSpy told(&slider, SIGNAL(sendProgressValue(double)));
    slider.setValue(5000);
    slider.setValue(10001);
    QCOMPARE(told.count(), 0);
}

void TestQSliderCtrl::aClickOnTheTrackTakesTheHandleThere()
{
    qSliderCtrl slider;
    dress(slider);
    QSignalSpy told(&slider, SIGNAL(sendProgressValue(double)));
    QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(100, 10));
    QCOMPARE(handleOf(slider)->x(), 100 - half);
    QVERIFY(handleOf(slider)->getMove());
    QCOMPARE(told.takeFirst().first().toDouble(), 0.5);
    QTest::mouseRelease(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(100, 10));
    QVERIFY(!handleOf(slider)->getMove());
    QCOMPARE(told.count(), 0);
}

void TestQSliderCtrl::aClickNearTheEndsDoesNothing()
{
    qSliderCtrl slider;
    dress(slider);
    slider.setValue(5000);
    QSignalSpy told(&slider, SIGNAL(sendProgressValue(double)));
    for (const int x : {half - 1, 200 - half + 1}) {
        QTest::mouseClick(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(x, 10));
        QCOMPARE(handleOf(slider)->x(), 100 - half);
        QCOMPARE(told.count(), 0);
    }
    QTest::mouseClick(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(half, 10));
    QCOMPARE(told.takeFirst().first().toDouble(), 0.0);
    QTest::mouseClick(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(200 - half, 10));
    QCOMPARE(told.takeFirst().first().toDouble(), 1.0);
}

void TestQSliderCtrl::draggingTheTrackStopsAtTheEnds()
{
    qSliderCtrl slider;
    dress(slider);
    const auto dragBy = [&slider](int distance) {
        QSignalSpy told(&slider, SIGNAL(sendProgressValue(double)));
        drag(slider, QPoint(100, 10), distance);
        return told.count() == 2 ? told.last().first().toDouble() : -1;
    };
    QCOMPARE(dragBy(45), (145.0 - half) / 180);
    QCOMPARE(handleOf(slider)->x(), 145 - half);
    QCOMPARE(dragBy(500), 1.0);
    QCOMPARE(handleOf(slider)->x(), 200 - handleWidth);
    QCOMPARE(dragBy(-500), 0.0);
    QCOMPARE(handleOf(slider)->x(), 0);
}

void TestQSliderCtrl::theTrackDragsOnlyWhileTheHandleIsHeld()
{
    qSliderCtrl slider;
    dress(slider);
    QSignalSpy told(&slider, SIGNAL(sendProgressValue(double)));
    drag(slider, QPoint(half - 5, 10), 60); // pressed where a press does nothing
    QCOMPARE(told.count(), 0);
    QCOMPARE(handleOf(slider)->x(), 0);
}

void TestQSliderCtrl::draggingTheHandleSnapsToTheLeftEnd()
{
    qSliderCtrl slider;
    dress(slider);
    const auto dragBy = [&slider](int distance) {
        slider.setValue(5000); // the handle at 90
        QSignalSpy told(&slider, SIGNAL(sendProgressValue(double)));
        drag(*handleOf(slider), QPoint(7, 6), distance);
        return told.count() == 1 ? told.last().first().toDouble() : -1;
    };
    QCOMPARE(dragBy(30), 120.0 / 180);
    QCOMPARE(handleOf(slider)->x(), 120);
    QCOMPARE(dragBy(-80), 10.0 / 180);
    QCOMPARE(handleOf(slider)->x(), 10);
    // What lies between the left end and half the handle's width cannot be reached.
    QCOMPARE(dragBy(-81), 0.0);
    QCOMPARE(handleOf(slider)->x(), 0);
    QCOMPARE(dragBy(-500), 0.0);
    QCOMPARE(dragBy(90), 1.0);
    QCOMPARE(dragBy(91), 1.0);
    QCOMPARE(handleOf(slider)->x(), 200 - handleWidth);
}

void TestQSliderCtrl::withoutAHandleTheWholeTrackDrags()
{
    qSliderCtrl slider;
    slider.setBottomImage(path("track.png"));
    slider.setTopImage(path("fill.png"));
    slider.setWidth(460);
    QSignalSpy told(&slider, SIGNAL(sendProgressValue(double)));
    QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(230, 10));
    QCOMPARE(told.takeFirst().first().toDouble(), 0.5);
    QTest::mouseRelease(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(230, 10));
    drag(slider, QPoint(0, 10), 115);
    QCOMPARE(told.takeFirst().first().toDouble(), 0.0);
    QCOMPARE(told.takeFirst().first().toDouble(), 0.25);
    drag(slider, QPoint(459, 10), 100);
    QCOMPARE(told.takeLast().first().toDouble(), 1.0);
}

void TestQSliderCtrl::aSliderAsWideAsItsHandleTellsZero()
{
    qSliderCtrl slider;
    dress(slider);
    slider.setWidth(handleWidth);
    QSignalSpy told(&slider, SIGNAL(sendProgressValue(double)));
    QTest::mouseClick(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(half, 10));
    QCOMPARE(told.takeFirst().first().toDouble(), 0.0);
    slider.setWidth(0);
    slider.setValue(5000);
    QCOMPARE(slider.getValue(), 0.0F);
}

void TestQSliderCtrl::aDisabledMoveChangesNothing()
{
    qSliderCtrl slider;
    dress(slider);
    slider.setDisableMove();
    slider.setValue(5000);
    QSignalSpy told(&slider, SIGNAL(sendProgressValue(double)));
    drag(slider, QPoint(150, 10), 20);
    drag(*handleOf(slider), QPoint(5, 5), 40);
    QCOMPARE(told.count(), 0);
    QCOMPARE(handleOf(slider)->x(), 100 - half);
    slider.setValue(2500);
    QCOMPARE(handleOf(slider)->x(), 50 - half);
}

void TestQSliderCtrl::theHandleLooksLikeAnImageButton()
{
    qSliderCtrl slider;
    dress(slider);
    QSliderCtrlBtn& handle = *handleOf(slider);
    const auto look = [&handle] { return shownAt(handle, 1).pixel(5, 5); };
    QCOMPARE(look(), cellColours[0]);
    enter(handle);
    QCOMPARE(look(), cellColours[1]);
    QCOMPARE(handle.cursor().shape(), Qt::PointingHandCursor);
    QTest::mousePress(&handle, Qt::LeftButton);
    QCOMPARE(look(), cellColours[2]);
    leave(handle);
    QVERIFY(handle.getMove());
    QTest::mouseRelease(&handle, Qt::LeftButton);
    QCOMPARE(look(), cellColours[0]);
    handle.setEnabled(false);
    QCOMPARE(look(), cellColours[3]);
    handle.setEnabled(true);
    QCOMPARE(look(), cellColours[0]);
    handle.setStatePress();
    QCOMPARE(handle.state(), int(StripButton::StatePressed));
    handle.setStateNormal();
    QCOMPARE(handle.state(), int(StripButton::StateNormal));
}

void TestQSliderCtrl::theHandleCanHideUntilThePointerComes()
{
    qSliderCtrl slider;
    slider.setBtnHide();
    dress(slider);
    slider.show();
    QVERIFY(QTest::qWaitForWindowExposed(&slider, patience));
    QVERIFY(!handleOf(slider)->isVisible());
    enter(slider);
    QVERIFY(handleOf(slider)->isVisible());
    QCOMPARE(slider.cursor().shape(), Qt::PointingHandCursor);
    leave(slider);
    QVERIFY(!handleOf(slider)->isVisible());
}

QTEST_MAIN(TestQSliderCtrl)
#include "tst_qsliderctrl.moc"
