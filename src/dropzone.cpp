#include "dropzone.h"

#include "collection/formats.h"
#include "common/style.h"

#include <QPainter>
#include <QWidget>

namespace {
constexpr int rightColumnWidth = 330;
constexpr int buttonAboveBottom = 250;
constexpr int gap = 24;
constexpr int formatPitch = 44;     // from the middle of one to the next
constexpr int formatBaseline = 231; // in the picture
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
    nameFormats(painter, corner + QPoint(picture.width() / 2, formatBaseline));
}

/// What a drop takes, side by side around the middle of their line.
void DropZone::nameFormats(QPainter& painter, const QPoint& middle)
{
    const QStringList formats = Formats::dropped();
    painter.setFont(Style::font(11));
    painter.setPen(Style::muted);
    int left = middle.x() - formats.size() * formatPitch / 2;
    for (const QString& format : formats) {
        const int width = painter.fontMetrics().horizontalAdvance(format);
        painter.drawText(left + (formatPitch - width) / 2, middle.y(), format);
        left += formatPitch;
    }
}
