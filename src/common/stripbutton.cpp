#include "common/stripbutton.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <cmath>

namespace {
/// The button that took the last press.
QPointer<const StripButton>& lastPressed()
{
    static QPointer<const StripButton> button;
    return button;
}
} // namespace

StripButton::StripButton(QWidget* parent) : QPushButton(parent) {}

StripButton::~StripButton() = default;

QSize StripButton::loadStrip(const QString& path)
{
    m_pImage = SkinPicture::shared(path);
    const QSize strip = m_pImage->size();
    return QSize(strip.width() / 4, strip.height());
}

qreal StripButton::corner() const
{
    const QImage strip = hasStrip() ? m_pImage->image(1) : QImage();
    if (strip.width() < 2 || strip.height() < height() / 2)
        return 0;
    int y = 0;
    while (y < height() / 2 && qAlpha(strip.pixel(1, y)) < 128)
        ++y;
    // Of the circle that leaves so much room above it in the second column.
    constexpr qreal x = 1.5;
    return y == 0 ? 0 : qMin(x + y + std::sqrt(2 * x * y), height() / 2.0);
}

void StripButton::changeState(int state)
{
    if (m_nState == state)
        return;
    m_nState = state;
    repaint();
}

void StripButton::mousePressEvent(QMouseEvent* event)
{
    lastPressed() = this;
    if (event->button() == Qt::LeftButton) {
        if (!isEnabled())
            m_nState = StateDisabled;
        else
            changeState(StatePressed);
    }
    QPushButton::mousePressEvent(event);
}

void StripButton::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (!m_bChangesFiles || lastPressed() == this)
        QPushButton::mouseDoubleClickEvent(event);
}

void StripButton::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        if (!isEnabled())
            m_nState = StateDisabled;
        else if (m_nState == StatePressed)
            changeState(StateNormal); // Oddity 47: not hover, wherever the pointer is.
    }
    QPushButton::mouseReleaseEvent(event);
}

void StripButton::enterEvent(QEvent* event)
{
    if (!isEnabled())
        m_nState = StateDisabled;
    else
        changeState(StateHover);
    QPushButton::enterEvent(event);
}

void StripButton::leaveEvent(QEvent* event)
{
    if (!isEnabled())
        m_nState = StateDisabled;
    else if (m_nState == StateHover)
        changeState(StateNormal); // a pressed button keeps its look until the release
    QPushButton::leaveEvent(event);
}

void StripButton::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange)
        m_nState = isEnabled() ? StateNormal : StateDisabled;
    QPushButton::changeEvent(event);
}

void StripButton::paintEvent(QPaintEvent* event)
{
    if (!m_pImage) {
        QPushButton::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform); // for ratios between the scales of the skin
    painter.setOpacity(cellOpacity());
    const QImage& strip = m_pImage->image(painter);
    const int cell = shownCell();
    const bool shifted = cell >= StateHover && cell <= StateDisabled;
    // From the cell to the strip's end; the widget's edge cuts off the cells behind.
    const int left = qRound((shifted ? cell * width() : 0) * strip.devicePixelRatio());
    painter.drawImage(QPointF(0, 0), strip, QRectF(left, 0, strip.width() - left, strip.height()));
}
