#include "common/qimagebutton.h"
#include "navigationwidget.h"

#include <QSignalSpy>
#include <QtTest>

namespace {
const char* const rows[] = {"m_btnMusicAll", "m_btnMusicUndefined", "m_btnMusicDuplicate"};

/// Left of the captions.
QImage mark(const QImage& row)
{
    const int ratio = int(row.devicePixelRatio());
    return row.copy(QRect(9 * ratio, 13 * ratio, 19 * ratio, 18 * ratio));
}

/// The pixels that stand out of the row's ground, in shades of grey.
QVector<bool> shape(const QImage& mark)
{
    const int ground = qGray(mark.pixel(0, 0));
    QVector<bool> pixels;
    for (int y = 0; y < mark.height(); ++y)
        for (int x = 0; x < mark.width(); ++x)
            pixels.append(qAbs(qGray(mark.pixel(x, y)) - ground) > 40);
    return pixels;
}
} // namespace

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
    void theChosenRowLooksChosenThroughABan();
    void theLowerButtonsCanBeHidden();
    void buttonsStackWithoutGaps();
    void thePaneHasItsColours();
    void rowsAreToldApartWithoutColours();
    void marksStayWhileTheRowIsPressed();
    void theMarkOfTheChosenRowStays();
    void marksAreSharp();

private:
    QImage row(const char* name) const { return button(name)->grab().toImage(); }
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

void TestNavigationWidget::theChosenRowLooksChosenThroughABan()
{
    m_pane->OnBtnMusicUndefined();
    const auto look = [&](const char* name) {
        return m_pane->findChild<QWidget*>(name)->grab().toImage().pixelColor(1, 22);
    };
    const QColor bar = look("m_btnMusicUndefined");
    const QColor plain = look("m_btnMusicAll");
    QVERIFY(bar != plain);
    for (const bool forbid : {true, false}) {
        m_pane->SlotForbidClickingBtn(forbid);
        QCOMPARE(look("m_btnMusicUndefined"), bar);
        QCOMPARE(look("m_btnMusicAll"), plain);
        QCOMPARE(look("m_btnMusicDuplicate"), plain);
    }
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

void TestNavigationWidget::rowsAreToldApartWithoutColours()
{
    m_pane->SlotForbidClickingBtn(false);
    QVector<QVector<bool>> shapes;
    for (const char* name : rows)
        shapes.append(shape(mark(row(name))));
    for (int i = 0; i < 3; ++i) {
        const int size = shapes.at(i).size();
        const int drawn = shapes.at(i).count(true);
        QVERIFY2(drawn * 10 > size && drawn * 10 < size * 7, rows[i]);
        for (int j = 0; j < i; ++j) {
            int different = 0;
            for (int pixel = 0; pixel < size; ++pixel)
                different += shapes.at(i).at(pixel) != shapes.at(j).at(pixel) ? 1 : 0;
            QVERIFY2(different * 6 > size, qPrintable(QString("%1 of %2").arg(different).arg(size)));
        }
    }
}

void TestNavigationWidget::marksStayWhileTheRowIsPressed()
{
    m_pane->SlotForbidClickingBtn(false);
    for (const char* name : rows) {
        const QVector<bool> before = shape(mark(row(name)));
        QTest::mousePress(button(name), Qt::LeftButton);
        const QVector<bool> after = shape(mark(row(name)));
        int different = 0;
        for (int pixel = 0; pixel < after.size(); ++pixel)
            different += after.at(pixel) != before.at(pixel) ? 1 : 0;
        QVERIFY2(different * 20 < after.size(), name); // the ground is another one
        QTest::mouseRelease(button(name), Qt::LeftButton, Qt::NoModifier, QPoint(-20, -20));
    }
}

void TestNavigationWidget::theMarkOfTheChosenRowStays()
{
    m_pane->OnBtnMusicDuplicate();
    const QImage chosen = row("m_btnMusicDuplicate");
    m_pane->OnBtnMusicAll();
    const QImage other = row("m_btnMusicDuplicate");
    const qreal ratio = chosen.devicePixelRatio();
    const QPoint inFront(int(20 * ratio), int(24 * ratio));
    QCOMPARE(chosen.pixel(inFront), other.pixel(inFront));
    QVERIFY(chosen.pixel(int(2 * ratio), inFront.y()) != other.pixel(int(2 * ratio), inFront.y())); // the bar
}

void TestNavigationWidget::marksAreSharp()
{
    m_pane->SlotForbidClickingBtn(false);
    const QImage duplicate = row("m_btnMusicDuplicate");
    const int ratio = int(duplicate.devicePixelRatio());
    QCOMPARE(duplicate.size(), QSize(200, 44) * ratio);
    // The square in front reaches from column 15 to column 25, with a whole pixel at each end.
    const int middle = 25 * ratio;
    const QRgb front = duplicate.pixel(20 * ratio, middle);
    const QRgb ground = duplicate.pixel(28 * ratio, middle);
    QVERIFY(front != ground);
    QCOMPARE(duplicate.pixel(15 * ratio, middle), front);
    QCOMPARE(duplicate.pixel(15 * ratio - 1, middle), ground);
    QCOMPARE(duplicate.pixel(26 * ratio - 1, middle), front);
    QCOMPARE(duplicate.pixel(26 * ratio, middle), ground);
}

QTEST_MAIN(TestNavigationWidget)
#include "tst_navigationwidget.moc"
