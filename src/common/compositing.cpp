#include "common/compositing.h"

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

QRegion Compositing::rounded(const QRect& rect, int radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return QRegion(path.toFillPolygon().toPolygon());
}
