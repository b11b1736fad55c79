#pragma once

#include <QStyledItemDelegate>

/// Gives every cell of a cover grid one size, whatever its cover and caption: that of a cover as large as the
/// icon size allows with one line below. A view that takes all items for equally large asks for the size of
/// one of them only, and a single small cover would make all cells small.
class CoverGridDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// The same for delegates of another kind; takes icon size, font and style from the option.
    static QSize cellSize(const QStyleOptionViewItem& option);
};
