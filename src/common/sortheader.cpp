#include "common/sortheader.h"

#include "common/style.h"

#include <QPainter>

namespace {
constexpr qreal arrowGap = 6;
constexpr qreal arrowWidth = 8;
constexpr qreal arrowHeight = 5;
constexpr qreal edge = 4; // to the end of the section, whatever the caption leaves

void paintArrow(QPainter& painter, const QPointF& left, bool backwards)
{
    const qreal tip = backwards ? arrowHeight / 2 : -arrowHeight / 2;
    const QPointF points[] = {left + QPointF(0, -tip), left + QPointF(arrowWidth, -tip),
                              left + QPointF(arrowWidth / 2, tip)};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Style::markChosen);
    painter.drawPolygon(points, 3);
}
} // namespace

SortHeader::SortHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent)
{
    setSectionsClickable(true);
}

void SortHeader::mark(int column, bool backwards)
{
    m_column = column;
    m_backwards = backwards;
    viewport()->update();
}

QString SortHeader::caption(int column) const
{
    return model()->headerData(column, orientation(), Qt::DisplayRole).toString();
}

QString SortHeader::orderOf(int column) const
{
    if (column < 0 || column != m_column)
        return QString();
    return m_backwards ? QStringLiteral("In descending order") : QStringLiteral("In ascending order");
}

void SortHeader::paintSection(QPainter* painter, const QRect& rect, int column) const
{
    painter->save();
    QHeaderView::paintSection(painter, rect, column);
    painter->restore();
    if (column != m_column)
        return;
    const qreal behind =
        rect.center().x() + fontMetrics().horizontalAdvance(caption(column)) / 2.0 + arrowGap;
    const qreal last = rect.right() - edge - arrowWidth;
    painter->save();
    paintArrow(*painter, QPointF(qMin(behind, last), rect.center().y() + 0.5), m_backwards);
    painter->restore();
}
