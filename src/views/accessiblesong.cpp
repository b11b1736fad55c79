#include "views/accessiblesong.h"

#include "views/spokenrows.h"
#include "views/viewfocus.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QTimer>

AccessibleSong::AccessibleSong(ViewFocus* focus, int row) : m_focus(focus), m_row(row) {}

const QString& AccessibleSong::playAction()
{
    static const QString name = QStringLiteral("Play");
    return name;
}

/// Invalid once the view shows less, or there is none.
QModelIndex AccessibleSong::index() const
{
    const QAbstractItemView* const view = m_focus ? m_focus->view() : nullptr;
    return view ? view->model()->index(m_row, 0) : QModelIndex();
}

bool AccessibleSong::isValid() const
{
    return index().isValid();
}

QWindow* AccessibleSong::window() const
{
    return m_focus ? m_focus->window()->windowHandle() : nullptr;
}

QAccessibleInterface* AccessibleSong::parent() const
{
    return QAccessible::queryAccessibleInterface(m_focus);
}

QString AccessibleSong::text(QAccessible::Text which) const
{
    const auto* const rows = dynamic_cast<const SpokenRows*>(index().model()); // none for a row that is gone
    if (!rows)
        return QString();
    return which == QAccessible::Name          ? rows->nameOf(m_row)
           : which == QAccessible::Description ? rows->restOf(m_row)
                                               : QString();
}

QRect AccessibleSong::rect() const
{
    const QModelIndex place = index();
    if (!place.isValid() || !m_focus->isVisible())
        return QRect();
    QRect row = m_focus->view()->visualRect(place);
    row.moveTopLeft(m_focus->view()->viewport()->mapToGlobal(row.topLeft()));
    return row;
}

QAccessible::State AccessibleSong::state() const
{
    QAccessible::State state;
    const QModelIndex place = index();
    state.invalid = !place.isValid();
    if (state.invalid)
        return state;
    const QAbstractItemView& view = *m_focus->view();
    const QRect sight = view.viewport()->rect();
    state.offscreen = !sight.intersects(view.visualRect(place));
    state.disabled = !view.isEnabled();
    state.selectable = true;
    state.focusable = true;
    state.selected = isSelected();
    state.focused = state.selected && m_focus->hasFocus();
    return state;
}

bool AccessibleSong::isSelected() const
{
    return isValid() && m_focus->view()->currentIndex().row() == m_row;
}

void* AccessibleSong::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableCellInterface)
        return static_cast<QAccessibleTableCellInterface*>(this);
    if (type == QAccessible::ActionInterface)
        return static_cast<QAccessibleActionInterface*>(this);
    return nullptr;
}

QStringList AccessibleSong::actionNames() const
{
    return {pressAction(), playAction(), setFocusAction()};
}

QStringList AccessibleSong::keyBindingsForAction(const QString& name) const
{
    return name == playAction() ? QStringList(QStringLiteral("Return")) : QStringList();
}

/// Later: what asks for it waits for the answer, and a press may open a question.
void AccessibleSong::doAction(const QString& name)
{
    const QPersistentModelIndex wanted(index());
    const QPointer<ViewFocus> focus = m_focus;
    if (!wanted.isValid() || !actionNames().contains(name))
        return;
    QTimer::singleShot(0, m_focus, [focus, wanted, name] {
        QAbstractItemView* const view = focus->view();
        if (!wanted.isValid() || !view || view->model() != wanted.model() || !view->isEnabled() ||
            QApplication::activeModalWidget()) // a question waits for its answer
            return;
        focus->activateWindow();
        focus->setFocus(Qt::OtherFocusReason);
        emit(name == playAction() ? view->doubleClicked(wanted) : view->clicked(wanted));
    });
}
