#include "common/qimagebutton.h"

#include "common/skinwords.h"

#include <QMouseEvent>
#include <QPainter>

QImageButton::QImageButton(QWidget* parent) : QPushButton(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    QPalette captions = palette();
    captions.setColor(QPalette::ButtonText, QColor(0x28, 0x40, 0x4F));
    // A caption stays readable on the fourth cell, which navigation uses for the chosen row.
    captions.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x0B, 0x5C, 0x93));
    setPalette(captions);
}

QImageButton::~QImageButton() = default;

bool QImageButton::setBtnImage(const QString& path)
{
    m_pImage = std::make_unique<SkinPicture>(path);
    describe(m_pImage->file());
    const QSize strip = m_pImage->size();
    if (strip.width() == 0)
        return false;
    setFixedSize(strip.width() / 4, strip.height());
    return true;
}

void QImageButton::describe(const QString& picturePath)
{
    const SkinWords::Words words = SkinWords::of(picturePath);
    if (words.name.isEmpty())
        return;
    setAccessibleName(words.name);
    if (!words.inPicture)
        setToolTip(words.name);
}

void QImageButton::setBtnText(const QString& text)
{
    m_strText = text;
    setAccessibleName(text);
    repaint();
}

void QImageButton::changeState(int state)
{
    if (m_nState == state)
        return;
    m_nState = state;
    repaint();
}

void QImageButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        if (!isEnabled())
            m_nState = StateDisabled;
        else
            changeState(StatePressed);
    }
    QPushButton::mousePressEvent(event);
}

void QImageButton::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        if (!isEnabled())
            m_nState = StateDisabled;
        else if (m_nState == StatePressed)
            changeState(StateNormal); // not hover, although the pointer may still be over the button
    }
    QPushButton::mouseReleaseEvent(event);
}

void QImageButton::enterEvent(QEvent* event)
{
    if (!isEnabled())
        m_nState = StateDisabled;
    else
        changeState(StateHover);
    QPushButton::enterEvent(event);
}

void QImageButton::leaveEvent(QEvent* event)
{
    if (!isEnabled())
        m_nState = StateDisabled;
    else if (m_nState == StateHover)
        changeState(StateNormal); // a pressed button keeps its look until the release
    QPushButton::leaveEvent(event);
}

void QImageButton::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::EnabledChange)
        m_nState = isEnabled() ? StateNormal : StateDisabled;
    QPushButton::changeEvent(event);
}

void QImageButton::paintEvent(QPaintEvent* event)
{
    if (!m_pImage) {
        QPushButton::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform); // for ratios between the scales of the skin
    paintStrip(painter);
    painter.setFont(QFont(QStringLiteral("Arial"), 12, QFont::Normal));
    painter.drawText(32, 27, m_strText);
    paintFocus(painter);
}

void QImageButton::paintStrip(QPainter& painter) const
{
    const QImage& strip = m_pImage->image(devicePixelRatioF());
    const bool shifted = m_nState >= StateHover && m_nState <= StateDisabled;
    // From the cell to the strip's end; the widget's edge cuts off the cells behind.
    const int left = qRound((shifted ? m_nState * width() : 0) * strip.devicePixelRatio());
    painter.drawImage(QPointF(0, 0), strip, QRectF(left, 0, strip.width() - left, strip.height()));
}

void QImageButton::paintFocus(QPainter& painter) const
{
    if (!hasFocus() || !window()->testAttribute(Qt::WA_KeyboardFocusChange))
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(23, 50, 77, 190), 1, Qt::DotLine));
    painter.drawRoundedRect(QRectF(rect()).adjusted(2.5, 2.5, -2.5, -2.5), 6, 6);
}
