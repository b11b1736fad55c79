#include "common/textlink.h"

#include "common/style.h"
#include "common/textfit.h"

#include <QPainter>

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

void TextLink::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QFont shown = font();
    shown.setUnderline(underMouse());
    painter.setFont(shown);
    painter.setPen(isDown() ? Style::ink : Style::chosen);
    painter.drawText(rect(), Qt::AlignCenter, shownText());
}
