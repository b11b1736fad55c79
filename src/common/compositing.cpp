#include "common/compositing.h"

#include <QBitmap>
#include <QPainterPath>
#include <QRegion>
#include <QWidget>

#ifdef MELODRIFT_X11
#include <QX11Info>
#endif

bool Compositing::isActive()
{
#ifdef MELODRIFT_X11
    return !QX11Info::isPlatformX11() || QX11Info::isCompositingManagerRunning();
#else
    return true;
#endif
}

void Compositing::cutWhereNeeded(QWidget& window, const QRegion& shape)
{
    if (!isActive())
        window.setMask(shape);
}

QRegion Compositing::solidPart(const QImage& picture)
{
    const QImage pixels = picture.convertToFormat(QImage::Format_ARGB32);
    QImage solid(pixels.size(), QImage::Format_MonoLSB);
    solid.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)}); // as bitmaps have it
    solid.fill(0);
    for (int y = 0; y < pixels.height(); ++y)
        for (int x = 0; x < pixels.width(); ++x)
            if (qAlpha(pixels.pixel(x, y)) >= 128)
                solid.setPixel(x, y, 1);
    return QRegion(QBitmap::fromImage(solid));
}

QRegion Compositing::rounded(const QRect& rect, int radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return QRegion(path.toFillPolygon().toPolygon());
}
