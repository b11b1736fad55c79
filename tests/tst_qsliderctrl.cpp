#include "common/qimagebutton.h"
#include "common/qsliderctrl.h"

#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {
constexpr int handleWidth = 20;
constexpr int half = handleWidth / 2;
const QRgb cellColours[] = {qRgb(10, 200, 10), qRgb(200, 200, 10), qRgb(10, 10, 200), qRgb(120, 120, 120)};
const QRgb trackColour = qRgb(200, 220, 230);
const QRgb fillColour = qRgb(20, 120, 200);

/// What a screen of the ratio would show of the widget; transparent where nothing is drawn.
QImage shownAt(QWidget& widget, int ratio)
{
    QImage screen(widget.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    screen.setDevicePixelRatio(ratio);
    screen.fill(Qt::transparent);
    widget.render(&screen, QPoint(), QRegion(), QWidget::DrawChildren);
    return screen;
}

/// The picture alone on a transparent ground, its left upper corner at `corner`, in pixels.
void put(QImage& ground, const QPoint& corner, const QImage& picture)
{
    QPainter painter(&ground);
    painter.drawImage(corner, picture);
}

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
    void initTestCase();

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

    void roundEndsFollowTheFraction_data();
    void roundEndsFollowTheFraction();
    void aShortRoundFillHasBothEnds();
    void theFillEndsInTheMiddleOfTheHandle();
    void plainPicturesAreStretched();
    void missingPicturesDrawNothing();
    void theValueIsWrittenInWhite();
    void denseScreensShowTheDoubledPictures();

private:
    QString path(const char* name) const { return m_folder.filePath(name); }
    static QSliderCtrlBtn* handleOf(qSliderCtrl& slider) { return slider.findChild<QSliderCtrlBtn*>(); }
    /// 200 points wide: a track of 180 and a handle of 20.
    void dress(qSliderCtrl& slider) const
    {
        slider.setBottomImage(path("track.png"));
        slider.setTopImage(path("fill.png"));
        slider.setWidth(200);
        slider.setBtnImage(path("handle.png"));
    }

    QTemporaryDir m_folder;
};

void TestQSliderCtrl::initTestCase()
{
    QImage strip(4 * handleWidth, 12, QImage::Format_RGB32);
    for (int x = 0; x < strip.width(); ++x)
        for (int y = 0; y < strip.height(); ++y)
            strip.setPixel(x, y, cellColours[x / handleWidth]);
    QVERIFY(strip.save(path("handle.png")));
    QImage bar(100, 8, QImage::Format_RGB32);
    bar.fill(trackColour);
    QVERIFY(bar.save(path("track.png")));
    bar.fill(fillColour);
    QVERIFY(bar.save(path("fill.png")));
    QVERIFY(bar.copy(0, 0, 100, 30).save(path("high.png")));
}

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
    QCOMPARE(handle.state(), int(QImageButton::StatePressed));
    handle.setStateNormal();
    QCOMPARE(handle.state(), int(QImageButton::StateNormal));
}

void TestQSliderCtrl::theHandleCanHideUntilThePointerComes()
{
    qSliderCtrl slider;
    slider.setBtnHide();
    dress(slider);
    slider.show();
    QVERIFY(QTest::qWaitForWindowExposed(&slider));
    QVERIFY(!handleOf(slider)->isVisible());
    enter(slider);
    QVERIFY(handleOf(slider)->isVisible());
    QCOMPARE(slider.cursor().shape(), Qt::PointingHandCursor);
    leave(slider);
    QVERIFY(!handleOf(slider)->isVisible());
}

void TestQSliderCtrl::roundEndsFollowTheFraction_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("filled");
    QTest::newRow("0") << 0 << 0;
    QTest::newRow("0.01") << 100 << 0; // shorter than a round end
    QTest::newRow("0.5") << 5000 << 230;
    QTest::newRow("1") << 10000 << 460;
}

void TestQSliderCtrl::roundEndsFollowTheFraction()
{
    QFETCH(int, value);
    QFETCH(int, filled);
    qSliderCtrl slider;
    slider.setBottomImage(SkinPicture::path("trake_slider.png"));
    slider.setTopImage(SkinPicture::path("trake_slider2.png"));
    slider.setCircle(true);
    slider.setValue(value);
    for (const int ratio : {1, 2}) {
        const auto picture = [ratio](const char* name) {
            const QString plain = SkinPicture::path(name);
            QImage image(ratio == 1 ? plain : SkinPicture::doubledPath(plain));
            image.setDevicePixelRatio(1); // compared pixel by pixel
            return image;
        };
        const QImage full = picture("trake_slider2.png");
        const int end = filled * ratio;
        const int cap = 8 * ratio;
        const QPoint corner(0, 6 * ratio);
        QImage wanted(QSize(460, 20) * ratio, QImage::Format_ARGB32_Premultiplied);
        wanted.fill(Qt::transparent);
        put(wanted, corner, picture("trake_slider.png"));
        if (end > 0) {
            put(wanted, corner, full.copy(0, 0, end - cap, full.height()));
            put(wanted, corner + QPoint(end - cap, 0), full.copy(full.width() - cap, 0, cap, full.height()));
        }
        const QImage shown = shownAt(slider, ratio);
        for (int y = 0; y < wanted.height(); ++y)
            for (int x = 0; x < wanted.width(); ++x) {
                const QRgb is = shown.pixel(x, y);
                const QRgb should = wanted.pixel(x, y);
                const int off =
                    qMax(qMax(qAbs(qRed(is) - qRed(should)), qAbs(qGreen(is) - qGreen(should))),
                         qMax(qAbs(qBlue(is) - qBlue(should)), qAbs(qAlpha(is) - qAlpha(should))));
                QVERIFY2(off <= 2, qPrintable(QStringLiteral("ratio %1, (%2, %3): %4, not %5")
                                                  .arg(ratio)
                                                  .arg(x)
                                                  .arg(y)
                                                  .arg(is, 8, 16)
                                                  .arg(should, 8, 16)));
            }
    }
}

void TestQSliderCtrl::aShortRoundFillHasBothEnds()
{
    qSliderCtrl slider;
    slider.setTopImage(SkinPicture::path("trake_slider2.png"));
    slider.setBottomImage(SkinPicture::path("trake_slider.png"));
    slider.setCircle(true);
    const QImage bare = shownAt(slider, 1);
    const auto filled = [&slider, &bare](int position) {
        slider.setValue(position * 10000 / 460 + 1);
        const QImage shown = shownAt(slider, 1);
        QRect changed;
        for (int x = 0; x < bare.width(); ++x)
            for (int y = 0; y < bare.height(); ++y)
                if (bare.pixel(x, y) != shown.pixel(x, y))
                    changed |= QRect(x, y, 1, 1);
        return changed;
    };
    QVERIFY(filled(8).isEmpty());
    for (const int position : {9, 12, 16, 17, 40}) {
        const QRect changed = filled(position);
        QCOMPARE(changed.left(), 0);
        QCOMPARE(changed.right(), position - 1);
        QVERIFY(changed.top() >= 6 && changed.bottom() <= 13);
        // Both ends are as round as each other.
        const QImage shown = shownAt(slider, 1);
        QCOMPARE(shown.pixel(0, 6) != bare.pixel(0, 6),
                 shown.pixel(position - 1, 6) != bare.pixel(position - 1, 6));
        QCOMPARE(shown.pixel(4, 6) != bare.pixel(4, 6), true);
    }
}

void TestQSliderCtrl::theFillEndsInTheMiddleOfTheHandle()
{
    qSliderCtrl slider;
    dress(slider);
    handleOf(slider)->hide();
    QTest::mouseClick(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(120, 10));
    const QImage shown = shownAt(slider, 1);
    QCOMPARE(shown.pixel(half - 1, 10), qRgba(0, 0, 0, 0));
    QCOMPARE(shown.pixel(half, 10), fillColour);
    QCOMPARE(shown.pixel(119, 10), fillColour);
    QCOMPARE(shown.pixel(120, 10), trackColour);
    QCOMPARE(shown.pixel(199 - half, 10), trackColour);
    QCOMPARE(shown.pixel(200 - half, 10), qRgba(0, 0, 0, 0));
    slider.setValue(10000);
    QCOMPARE(shownAt(slider, 1).pixel(199 - half, 10), fillColour);
    QCOMPARE(shownAt(slider, 1).pixel(200 - half, 10), qRgba(0, 0, 0, 0));
}

void TestQSliderCtrl::plainPicturesAreStretched()
{
    qSliderCtrl slider;
    slider.setBottomImage(path("track.png"));
    slider.setTopImage(path("fill.png"));
    slider.setWidth(300);
    slider.setValue(100);
    const QImage shown = shownAt(slider, 1);
    QCOMPARE(shown.pixel(2, 10), fillColour); // also shorter than a round end
    QCOMPARE(shown.pixel(3, 10), trackColour);
    QCOMPARE(shown.pixel(299, 10), trackColour);
    QCOMPARE(shown.pixel(150, 5), qRgba(0, 0, 0, 0));
    QCOMPARE(shown.pixel(150, 14), qRgba(0, 0, 0, 0));
}

void TestQSliderCtrl::missingPicturesDrawNothing()
{
    qSliderCtrl slider;
    slider.setWidth(100);
    for (int i = 0; i < 3; ++i)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("does not load"));
    QVERIFY(slider.setBottomImage(path("none.png")));
    QCOMPARE(slider.size(), QSize(0, 20));
    QVERIFY(slider.setTopImage(path("none.png")));
    QVERIFY(slider.setBtnImage(path("none.png")));
    slider.setWidth(100);
    slider.setValue(5000);
    const QImage shown = shownAt(slider, 1);
    for (int x = 0; x < shown.width(); ++x)
        QCOMPARE(shown.pixel(x, 10), qRgba(0, 0, 0, 0));
}

void TestQSliderCtrl::theValueIsWrittenInWhite()
{
    qSliderCtrl slider;
    slider.setBottomImage(path("high.png"));
    slider.setValueRange(0, 100);
    slider.setValue(50);
    const QImage bare = shownAt(slider, 1);
    slider.showValueText(true);
    const QImage half = shownAt(slider, 1);
    QVERIFY(half != bare);
    bool white = false;
    for (int x = 0; x < half.width(); ++x)
        for (int y = 3; y < half.height(); ++y)
            white = white || half.pixel(x, y) == qRgb(255, 255, 255);
    QVERIFY(white);
    slider.setValue(51);
    QVERIFY(shownAt(slider, 1) != half);
}

void TestQSliderCtrl::denseScreensShowTheDoubledPictures()
{
    // One column in two: only the doubled picture can show that.
    QImage fine(200, 16, QImage::Format_RGB32);
    for (int x = 0; x < fine.width(); ++x)
        for (int y = 0; y < fine.height(); ++y)
            fine.setPixel(x, y, x % 2 ? trackColour : fillColour);
    QVERIFY(fine.save(path("track@2x.png")));
    QVERIFY(fine.save(path("handle@2x.png")));
    for (const bool circle : {false, true}) {
        qSliderCtrl slider;
        slider.setBottomImage(path("track.png"));
        slider.setCircle(circle);
        QCOMPARE(slider.size(), QSize(100, 20));
        const QImage shown = shownAt(slider, 2);
        for (int x = 0; x < 200; ++x)
            QCOMPARE(shown.pixel(x, 20), x % 2 ? trackColour : fillColour);
        QCOMPARE(shownAt(slider, 1).pixel(50, 10), trackColour);
    }
    QSliderCtrlBtn handle;
    handle.setBtnImage(path("handle.png"));
    QCOMPARE(handle.size(), QSize(handleWidth, 12));
    QCOMPARE(shownAt(handle, 2).pixel(1, 1), trackColour);
    QCOMPARE(shownAt(handle, 2).pixel(2, 1), fillColour);
    QVERIFY(QFile::remove(path("track@2x.png")));
    QVERIFY(QFile::remove(path("handle@2x.png")));
}

QTEST_MAIN(TestQSliderCtrl)
#include "tst_qsliderctrl.moc"
