#pragma once

#include "common/skinpicture.h"

#include <QItemDelegate>

/// Paints a small badge with the number of songs over each cover of the duplicate grid.
class PaintDupNumberDelegate : public QItemDelegate
{
    Q_OBJECT

public:
    explicit PaintDupNumberDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    /// One size for every cell, as in the song grid; so the badges stand in line.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// Nothing is edited here.
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

private:
    SkinPicture m_badge;
};
