#include "common/skinlabel.h"

#include <QMovie>
#include <QPainter>
#include <QStyle>

SkinLabel::SkinLabel(QWidget* parent) : QLabel(parent) {}

void SkinLabel::showPicture(const QString& path)
{
    m_picture = std::make_unique<SkinPicture>(path);
    setPixmap(QPixmap::fromImage(m_picture->image(devicePixelRatioF())));
}

void SkinLabel::paintEvent(QPaintEvent* event)
{
    const bool showsPicture = m_picture && !pixmap(Qt::ReturnByValue).isNull();
    if (!movie() && !showsPicture) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform); // for ratios between the scales of the skin
    const QPixmap shown = movie() ? movie()->currentPixmap() : QPixmap::fromImage(m_picture->image(painter));
    style()->drawItemPixmap(&painter, contentsRect(), int(alignment()), shown);
}
