#include "common/overlaybutton.h"

#include "common/style.h"

#include <QPainter>

namespace {
constexpr int tickRoom = 18;
constexpr int buttonMargin = 6;
constexpr qreal buttonCorner = 4;
} // namespace

OverlayButton::OverlayButton(QWidget* parent) : PaintedButton(parent)
{
    setCheckable(true);
    setFont(Style::font(11));
}

QSize OverlayButton::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(text()) + tickRoom + 2 * buttonMargin, 28};
}

/// What is checked is opaque enough for its caption on any picture, and so is the rest.
QColor OverlayButton::face() const
{
    QColor colour = isChecked() || isDown() ? Style::accentSoft : QColor(Qt::white);
    colour.setAlphaF(underMouse() || isDown() ? 0.95 : 0.85);
    return colour;
}

void OverlayButton::drawTick(QPainter& painter, const QPointF& centre) const
{
    painter.setPen(QPen(Style::chosen, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF points[] = {centre + QPointF(-5, 0), centre + QPointF(-1.5, 3.5), centre + QPointF(5, -4)};
    painter.drawPolyline(points, 3);
}

void OverlayButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Style::editorLine, 1));
    painter.setBrush(face());
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), buttonCorner, buttonCorner);
    const int captionWidth = fontMetrics().horizontalAdvance(text());
    const int room = isChecked() ? tickRoom : 0;
    const int left = (width() - captionWidth - room) / 2;
    if (isChecked())
        drawTick(painter, QPointF(left + 6, height() / 2.0));
    painter.setPen(Style::ink);
    painter.drawText(QRect(left + room, 0, captionWidth + 1, height()), Qt::AlignVCenter, text());
}
