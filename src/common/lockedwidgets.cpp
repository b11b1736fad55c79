#include "common/lockedwidgets.h"

#include <utility>

void LockedWidgets::lock(const QList<QWidget*>& widgets)
{
    if (!m_widgets.isEmpty() || widgets.isEmpty())
        return;
    m_focus = widgets.first()->window()->focusWidget();
    for (QWidget* widget : widgets) {
        if (!widget->isEnabled())
            continue;
        widget->setEnabled(false);
        m_widgets.append(widget);
    }
}

void LockedWidgets::unlock()
{
    for (const QPointer<QWidget>& widget : std::exchange(m_widgets, {}))
        if (widget)
            widget->setEnabled(true);
    if (m_focus && !m_focus->window()->focusWidget())
        m_focus->setFocus(Qt::OtherFocusReason);
    m_focus = nullptr;
}
