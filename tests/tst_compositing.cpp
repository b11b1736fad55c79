#include "common/compositing.h"
#include "common/skinpicture.h"
#include "deletingmusicwaitingdlg.h"
#include "showmusicinfowidget.h"

#include <QBitmap>
#include <QtTest>

namespace {
QImage painted(QWidget& widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::IgnoreMask);
    return image;
}

/// #9CCBE6; in a corner mixed a little with what is beside it.
bool isOutline(const QColor& colour)
{
    return colour.alpha() == 255 && colour.red() <= 0xD4 && colour.blue() >= 0xD8;
}

/// Whether the pixel is one of the last ones of the shape.
bool bordersOn(const QRegion& shape, int x, int y)
{
    for (const QPoint& beside : {QPoint(x - 1, y), QPoint(x + 1, y), QPoint(x, y - 1), QPoint(x, y + 1)})
        if (!shape.contains(beside))
            return true;
    return false;
}
} // namespace

/// What windows look like where the desktop does not compose them: cut to a shape, with every pixel in it
/// shown whole.
class TestCompositing : public QObject
{
    Q_OBJECT

private slots:
    void theCutOfTheCardFollowsItsPicture();
    void theCutWaitingCardIsPaintedWhole();
};

void TestCompositing::theCutOfTheCardFollowsItsPicture()
{
    const QImage card = SkinPicture(SkinPicture::path("bg_music_detail.png")).image(1);
    const QRegion shape = Compositing::solidPart(card);
    QCOMPARE(shape.boundingRect(), QRect(10, 8, 280, 208));
    ShowMusicInfoWidget window;
    window.setMask(shape);
    const QImage shown = painted(window);
    for (int y = 0; y < card.height(); ++y)
        for (int x = 0; x < card.width(); ++x) {
            if (qAlpha(card.pixel(x, y)) == 255)
                QVERIFY(shape.contains(QPoint(x, y)));
            if (shape.contains(QPoint(x, y)) && bordersOn(shape, x, y))
                QVERIFY2(isOutline(shown.pixelColor(x, y)), qPrintable(shown.pixelColor(x, y).name()));
        }
}

void TestCompositing::theCutWaitingCardIsPaintedWhole()
{
    DeletingMusicWaitingDlg dialog;
    const QRect card = QRegion(QBitmap::fromImage(painted(dialog).createAlphaMask())).boundingRect();
    QVERIFY(card.width() > 100 && card.width() < dialog.width());
    const QRegion shape = Compositing::rounded(card, 10);
    dialog.setMask(shape);
    const QImage shown = painted(dialog);
    for (int y = 0; y < shown.height(); ++y)
        for (int x = 0; x < shown.width(); ++x)
            if (shape.contains(QPoint(x, y)))
                QVERIFY2(qAlpha(shown.pixel(x, y)) == 255, qPrintable(QString("%1, %2").arg(x).arg(y)));
}

QTEST_MAIN(TestCompositing)
#include "tst_compositing.moc"
