#include "common/dropdownbox.h"

#include "common/style.h"

#include <QAbstractItemView>
#include <QStyledItemDelegate>

namespace {
constexpr int listRowHeight = 27;

/// Style sheets of a box reach the entries of menus, as which its list is drawn otherwise.
class ListRows : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return {QStyledItemDelegate::sizeHint(option, index).width(), listRowHeight};
    }
};
} // namespace

void DropDownBox::showPopup()
{
    if (!m_bListDressed)
        dressList();
    QComboBox::showPopup();
}

void DropDownBox::dressList()
{
    m_bListDressed = true;
    setItemDelegate(new ListRows(this));
    QPalette colours(Style::window);
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::Text, Style::text);
    colours.setColor(QPalette::Highlight, Style::selection);
    colours.setColor(QPalette::HighlightedText, Style::ink);
    view()->setPalette(colours);
}
