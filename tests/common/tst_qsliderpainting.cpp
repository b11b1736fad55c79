#include "sliderpictures.h"

#include <QPainter>
#include <QtTest>

using namespace SliderPictures;

namespace {
/// The picture alone on a transparent ground, its left upper corner at `corner`, in pixels.
void put(QImage& ground, const QPoint& corner, const QImage& picture)
{
    QPainter painter(&ground);
    painter.drawImage(corner, picture);
}

} // namespace

class TestQSliderPainting : public QObject
{
    Q_OBJECT

private slots:
    void roundEndsFollowTheFraction_data();
    void roundEndsFollowTheFraction();
    void aShortRoundFillHasBothEnds();
    void theFillEndsInTheMiddleOfTheHandle();
    void plainPicturesAreStretched();
    void missingPicturesDrawNothing();
    void theValueIsWrittenInWhite();
    void denseScreensShowTheDoubledPictures();

private:
    QString path(const char* name) const { return m_pictures.path(name); }
    void dress(qSliderCtrl& slider) const { m_pictures.dress(slider); }

    Folder m_pictures;
};

void TestQSliderPainting::roundEndsFollowTheFraction_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("filled");
    QTest::newRow("0") << 0 << 0;
    QTest::newRow("0.01") << 100 << 0; // shorter than a round end
    QTest::newRow("0.5") << 5000 << 230;
    QTest::newRow("1") << 10000 << 460;
}

void TestQSliderPainting::roundEndsFollowTheFraction()
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

void TestQSliderPainting::aShortRoundFillHasBothEnds()
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

void TestQSliderPainting::theFillEndsInTheMiddleOfTheHandle()
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

void TestQSliderPainting::plainPicturesAreStretched()
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

void TestQSliderPainting::missingPicturesDrawNothing()
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

void TestQSliderPainting::theValueIsWrittenInWhite()
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

void TestQSliderPainting::denseScreensShowTheDoubledPictures()
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

QTEST_MAIN(TestQSliderPainting)
#include "tst_qsliderpainting.moc"
