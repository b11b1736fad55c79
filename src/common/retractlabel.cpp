#include "common/retractlabel.h"

#include "common/textfit.h"

#include <QPainter>

RetractLabel::RetractLabel(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

void RetractLabel::setText(const QString& text)
{
    m_strName = text;
    showFitting();
}

void RetractLabel::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    showFitting();
}

void RetractLabel::showFitting()
{
    const QString shown = TextFit::elided(m_strName, fontMetrics(), size());
    setToolTip(shown == m_strName ? QString() : m_strName);
    QLabel::setText(shown);
}

void RetractLabel::paintEvent(QPaintEvent*)
{
    // Laid out as it was measured: QLabel itself would wrap between words only.
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(rect(), int(alignment()) | Qt::TextWrapAnywhere, text());
}
