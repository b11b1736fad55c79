#include "dropzone.h"

#include <QPainter>

namespace {
constexpr int rightColumnWidth = 330;
constexpr int buttonAboveBottom = 250;
constexpr int gap = 24;
} // namespace

DropZone::DropZone() : m_picture(SkinPicture::path("bg_openfile.png")) {}

QPoint DropZone::buttonPlace(const QSize& area, const QSize& button) const
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
