#include "views/accessiblesongs.h"

#include "common/canbesilent.h"
#include "views/accessiblesong.h"
#include "views/viewfocus.h"

#include <QAbstractItemView>
#include <QHeaderView>
#include <QTableView>

namespace {
/// A view that something else has the focus for, and which is heard of by that. What the view tells of its
/// songs and its list concerns that, too.
class SilentView : public QAccessibleWidget, public CanBeSilent
{
public:
    using QAccessibleWidget::QAccessibleWidget;

    bool isSilent() const override { return true; }
    /// Its columns, by which it can be ordered.
    QWidget* standIn() const override
    {
        const auto* const table = qobject_cast<const QTableView*>(widget());
        return table ? table->horizontalHeader() : nullptr;
    }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    /// The song that the view means by this number; of a view out of sight the view, which nobody hears.
    QAccessibleInterface* child(int index) const override
    {
        const auto* const table = qobject_cast<const QTableView*>(widget());
        const int row = table ? index / (table->model()->columnCount() + 1) - 1 : index; // headers count
        const ViewFocus* const focus = ViewFocus::of(view());
        QAccessibleInterface* const song = focus && focus->view() == &view() ? list()->child(row) : nullptr;
        return song ? song : QAccessible::queryAccessibleInterface(widget());
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TableInterface && list() ? list()->tableInterface()
                                                             : QAccessibleWidget::interface_cast(type);
    }

private:
    const QAbstractItemView& view() const { return *static_cast<const QAbstractItemView*>(widget()); }
    QAccessibleInterface* list() const
    {
        return QAccessible::queryAccessibleInterface(ViewFocus::of(view()));
    }
};

void forget(QHash<int, QAccessible::Id>& items)
{
    for (const QAccessible::Id item : qAsConst(items))
        QAccessible::deleteAccessibleInterface(item);
    items.clear();
}

QAccessibleInterface* songsOrSilence(const QString& className, QObject* object)
{
    if (className == QLatin1String("ViewFocus"))
        return new AccessibleSongs(static_cast<ViewFocus*>(object));
    auto* const view = className == QLatin1String("QListView") || className == QLatin1String("QTableView")
                           ? qobject_cast<QAbstractItemView*>(object)
                           : nullptr;
    return view && ViewFocus::of(*view) ? new SilentView(view) : nullptr;
}
} // namespace

void AccessibleSongs::install()
{
    QAccessible::installFactory(songsOrSilence); // which counts once
}

AccessibleSongs::AccessibleSongs(ViewFocus* focus) : QAccessibleWidget(focus, QAccessible::List) {}

AccessibleSongs::~AccessibleSongs()
{
    forget(m_formerItems);
    forget(m_items);
}

QAbstractItemView* AccessibleSongs::view() const
{
    return static_cast<const ViewFocus*>(widget())->view();
}

int AccessibleSongs::rowCount() const
{
    return view() ? view()->model()->rowCount() : 0;
}

QAccessibleInterface* AccessibleSongs::child(int index) const
{
    if (index < 0 || index >= rowCount())
        return nullptr;
    auto known = m_items.constFind(index);
    if (known == m_items.constEnd()) {
        auto* const item = new AccessibleSong(static_cast<ViewFocus*>(widget()), index);
        known = m_items.insert(index, QAccessible::registerAccessibleInterface(item));
    }
    return QAccessible::accessibleInterface(*known);
}

int AccessibleSongs::indexOfChild(const QAccessibleInterface* child) const
{
    const auto* const song = dynamic_cast<const AccessibleSong*>(child);
    return song && song->parent() == this ? song->rowIndex() : -1;
}

/// Without a look at every row.
QAccessibleInterface* AccessibleSongs::childAt(int x, int y) const
{
    const QAbstractItemView* const shown = view();
    return shown ? child(shown->indexAt(shown->viewport()->mapFromGlobal({x, y})).row()) : nullptr;
}

QAccessibleInterface* AccessibleSongs::focusChild() const
{
    return widget()->hasFocus() && view() ? child(view()->currentIndex().row()) : nullptr;
}

void* AccessibleSongs::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableInterface)
        return static_cast<QAccessibleTableInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessibleInterface* AccessibleSongs::cellAt(int row, int column) const
{
    return column == 0 ? child(row) : nullptr;
}

QList<QAccessibleInterface*> AccessibleSongs::selectedCells() const
{
    QList<QAccessibleInterface*> cells;
    for (const int row : selectedRows())
        cells.append(child(row));
    return cells;
}

QList<int> AccessibleSongs::selectedRows() const
{
    const int row = view() ? view()->currentIndex().row() : -1;
    return row < 0 ? QList<int>() : QList<int>{row};
}

/// The rows are other songs from now on. With the id of the one that was announced last another would be
/// taken for that, and not be read out.
void AccessibleSongs::modelChange(QAccessibleTableModelChangeEvent*)
{
    if (m_items.isEmpty())
        return;
    forget(m_formerItems);
    m_formerItems.swap(m_items);
    for (const QAccessible::Id item : qAsConst(m_formerItems))
        static_cast<AccessibleSong*>(QAccessible::accessibleInterface(item))->leave();
}
