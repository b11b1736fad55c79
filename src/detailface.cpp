#include "detailface.h"

#include "common/style.h"

#include <QPainter>

DetailFace::DetailFace() : m_picture(SkinPicture::path("bg_right.png")) {}

void DetailFace::paint(QPainter& painter, const QRect& panel, const QRect& fields, int rows) const
{
    // Where the face ends its flat colour goes on.
    painter.fillRect(panel, Style::panel);
    painter.fillRect(0, 0, 1, panel.height(), Style::line);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QPointF(0, 0), m_picture.image(painter));
    for (int row = 1; row <= rows; ++row)
        painter.fillRect(fields.x() + 8, fields.y() + fields.height() * row / rows - 1, fields.width() - 16,
                         1, Style::fieldLine);
}
