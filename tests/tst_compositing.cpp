#include "common/compositing.h"
#include "common/skinpicture.h"
#include "deletingmusicwaitingdlg.h"

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
    const QRegion shape = Compositing::opaquePart(card);
    QCOMPARE(shape.boundingRect(), QRect(10, 8, 280, 208));
    int outline = 0;
    for (int y = 0; y < card.height(); ++y)
        for (int x = 0; x < card.width(); ++x) {
            const QRgb pixel = card.pixel(x, y);
            QCOMPARE(shape.contains(QPoint(x, y)), qAlpha(pixel) == 255);
            outline += pixel == qRgb(0x9C, 0xCB, 0xE6) ? 1 : 0;
        }
    QVERIFY(outline > 900); // nearly all of the way round
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
