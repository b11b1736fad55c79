#include "views/paintdupnumberdelegate.h"

#include "common/style.h"
#include "dupmusicinfo.h"
#include "views/covergriddelegate.h"

#include <QPainter>

PaintDupNumberDelegate::PaintDupNumberDelegate(QObject* parent)
    : QItemDelegate(parent), m_badge(SkinPicture::path("pic_number.png"))
{
}

void PaintDupNumberDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const
{
    QItemDelegate::paint(painter, option, index);
    const auto* group = index.isValid() ? static_cast<const DupMusicInfo*>(index.internalPointer()) : nullptr;
    if (!group)
        return;
    const int right = option.rect.right();
    const int top = option.rect.top();
    painter->save();
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(QRect(right - 21, top + 2, 17, 17),
                       m_badge.image(painter->device()->devicePixelRatioF()));
    painter->setFont(Style::font(9, QFont::Normal));
    painter->setPen(Style::textOnColour);
    // Oddity 32: not centred; a count of two digits runs past the badge's middle.
    painter->drawText(right - 15, top + 13, QString::number(group->musicList.size()));
    painter->restore();
}

QSize PaintDupNumberDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    return CoverGridDelegate::cellSize(option);
}

QWidget* PaintDupNumberDelegate::createEditor(QWidget*, const QStyleOptionViewItem&, const QModelIndex&) const
{
    return nullptr;
}

void PaintDupNumberDelegate::setEditorData(QWidget*, const QModelIndex&) const {}

void PaintDupNumberDelegate::setModelData(QWidget*, QAbstractItemModel*, const QModelIndex&) const {}
