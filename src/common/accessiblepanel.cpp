#include "common/accessiblepanel.h"

#include <QMenu>
#include <QVariant>

#include <algorithm>

namespace {
/// Windows and menus stand beside the window that they belong to.
bool isPartOf(const QObject* object)
{
    return object->isWidgetType() && !static_cast<const QWidget*>(object)->isWindow() &&
           !qobject_cast<const QMenu*>(object);
}

/// The widget, or what speaks in its place; null for none.
QWidget* speaker(QWidget* widget)
{
    const QAccessibleInterface* const part =
        widget->isHidden() ? nullptr : QAccessible::queryAccessibleInterface(widget);
    const auto* const perhaps = dynamic_cast<const CanBeSilent*>(part);
    if (perhaps && perhaps->isSilent())
        return perhaps->standIn();
    return part ? widget : nullptr;
}
} // namespace

bool AccessiblePanel::holdsWidgets(const QWidget& widget)
{
    return std::any_of(widget.children().begin(), widget.children().end(), isPartOf);
}

QList<QWidget*> AccessiblePanel::parts() const
{
    QList<QWidget*> parts;
    for (QObject* object : widget()->children())
        if (QWidget* part = isPartOf(object) ? speaker(static_cast<QWidget*>(object)) : nullptr)
            parts.append(part);
    return parts;
}

int AccessiblePanel::childCount() const
{
    return parts().size();
}

QAccessibleInterface* AccessiblePanel::child(int index) const
{
    return QAccessible::queryAccessibleInterface(parts().value(index));
}

int AccessiblePanel::indexOfChild(const QAccessibleInterface* child) const
{
    return child ? parts().indexOf(qobject_cast<QWidget*>(child->object())) : -1;
}

QAccessible::Role AccessiblePanel::role() const
{
    const QVariant given = widget()->property(roleProperty);
    if (given.isValid())
        return QAccessible::Role(given.toInt());
    if (widget()->isWindow())
        return widget()->windowType() == Qt::Dialog ? QAccessible::Dialog : QAccessible::Window;
    return widget()->accessibleName().isEmpty() ? QAccessible::Client : QAccessible::Grouping;
}

bool AccessiblePanel::isSilent() const
{
    if (role() != QAccessible::Client)
        return false;
    const QObjectList& children = widget()->children();
    return std::none_of(children.begin(), children.end(), [](QObject* object) {
        return isPartOf(object) && speaker(static_cast<QWidget*>(object));
    });
}

QList<QAccessibleInterface*> AccessibleProgram::windows() const
{
    QList<QAccessibleInterface*> shown;
    for (int i = 0; i < QAccessibleApplication::childCount(); ++i) {
        QAccessibleInterface* const window = QAccessibleApplication::child(i);
        const auto* const widget = window ? qobject_cast<const QWidget*>(window->object()) : nullptr;
        if (window && !(widget && widget->isHidden()))
            shown.append(window);
    }
    return shown;
}

int AccessibleProgram::indexOfChild(const QAccessibleInterface* child) const
{
    return windows().indexOf(const_cast<QAccessibleInterface*>(child)); // only compared
}
