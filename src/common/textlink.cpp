#include "common/textlink.h"

#include "common/style.h"
#include "common/textfit.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>

namespace {
constexpr int margin = 3;
}

TextLink::TextLink(const QString& caption, QWidget* parent) : PaintedButton(parent)
{
    setText(caption);
    setAccessibleName(caption);
    setFont(Style::font(12));
}

QSize TextLink::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(text()) + 2 * margin, fontMetrics().height() + 2 * margin};
}

/// The caption as it fits: in one line, or in two.
QString TextLink::shownText() const
{
    const int room = width() - 2 * margin;
    const QFontMetrics metrics = fontMetrics();
    const auto fits = [&](const QString& words) { return metrics.horizontalAdvance(words) <= room; };
    const int blank = text().indexOf(QLatin1Char(' '));
    if (blank < 0 || fits(text()))
        return TextFit::elided(text(), fits);
    return text().left(blank) + QLatin1Char('\n') + TextFit::elided(text().mid(blank + 1), fits);
}

/// A series of quick presses is one wish, however many they are.
void TextLink::mousePressEvent(QMouseEvent* event)
{
    const auto pause = static_cast<unsigned long>(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    if (m_bClickedTwice && event->timestamp() - m_lastOfSeries < pause) {
        m_lastOfSeries = event->timestamp();
        return;
    }
    m_bClickedTwice = false;
    PaintedButton::mousePressEvent(event);
}

void TextLink::mouseDoubleClickEvent(QMouseEvent* event)
{
    m_bClickedTwice = true;
    m_lastOfSeries = event->timestamp();
}

void TextLink::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QFont shown = font();
    shown.setUnderline(underMouse());
    painter.setFont(shown);
    painter.setPen(isDown() ? Style::ink : Style::chosen);
    painter.drawText(rect(), Qt::AlignCenter, shownText());
}
