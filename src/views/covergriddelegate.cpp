#include "views/covergriddelegate.h"

#include <QApplication>

QSize CoverGridDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    return cellSize(option);
}

QSize CoverGridDelegate::cellSize(const QStyleOptionViewItem& option)
{
    QStyleOptionViewItem cell = option;
    const int edge = qMin(option.decorationSize.width(), option.decorationSize.height());
    cell.decorationSize = QSize(edge, edge);
    cell.text = QStringLiteral("X");
    cell.features |= QStyleOptionViewItem::HasDecoration | QStyleOptionViewItem::HasDisplay;
    const QStyle* style = cell.widget ? cell.widget->style() : QApplication::style();
    return style->sizeFromContents(QStyle::CT_ItemViewItem, &cell, QSize(), cell.widget);
}
