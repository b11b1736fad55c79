#include "dropzone.h"

#include <QPainter>
#include <QWidget>

namespace {
constexpr int rightColumnWidth = 330;
constexpr int buttonAboveBottom = 250;
constexpr int gap = 24;
} // namespace

DropZone::DropZone() : m_picture(SkinPicture::path("bg_openfile.png")) {}

void DropZone::placeButton(QWidget& button, const QSize& area)
{
    button.move(buttonPlace(area, button.size()));
}

QPoint DropZone::buttonPlace(const QSize& area, const QSize& button)
{
    return {(area.width() - button.width() - rightColumnWidth) / 2, area.height() - buttonAboveBottom};
}

void DropZone::paint(QPainter& painter, const QSize& area, const QSize& button) const
{
    const QSize picture = m_picture.size();
    const QPoint corner((area.width() - rightColumnWidth - picture.width()) / 2,
                        buttonPlace(area, button).y() - picture.height() - gap);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(corner, m_picture.image(painter));
}
