#include "views/viewfocus.h"

#include "views/accessiblesongs.h"

#include <QAbstractItemView>
#include <QEvent>
#include <QHeaderView>
#include <QTimer>

namespace {
constexpr QRect nowhere(-2, -2, 1, 1);
}

ViewFocus::ViewFocus(const std::array<QAbstractItemView*, 4>& views, QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("m_viewFocus"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::ClickFocus);
    setGeometry(nowhere);
    AccessibleSongs::install();
    for (QAbstractItemView* view : views) {
        connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this, [this, view] {
            if (view == m_followed)
                announceMark();
        });
        view->installEventFilter(this);
        view->viewport()->installEventFilter(this);
        for (const QHeaderView* header : view->findChildren<QHeaderView*>())
            header->viewport()->installEventFilter(this);
    }
}

ViewFocus* ViewFocus::of(const QAbstractItemView& view)
{
    const QWidget* const area = view.parentWidget(); // none of a list that pops up
    return area ? area->findChild<ViewFocus*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}

QAbstractItemView* ViewFocus::view() const
{
    return m_followed && !m_followed->isHidden() ? m_followed : nullptr;
}

void ViewFocus::follow(QAbstractItemView& view)
{
    m_followed = &view;
    setGeometry(view.isHidden() ? nowhere : view.geometry());
    // A window that becomes the active one takes the focus from what has no policy for it.
    setFocusPolicy(view.isHidden() ? Qt::ClickFocus : Qt::TabFocus);
    lower();
}

/// After the list itself, which is announced as whatever takes the focus.
void ViewFocus::focusInEvent(QFocusEvent* event)
{
    QWidget::focusInEvent(event);
    if (QAccessible::isActive())
        QTimer::singleShot(0, this, &ViewFocus::announceMark);
}

void ViewFocus::announceMark()
{
    if (!QAccessible::isActive() || !hasFocus())
        return;
    QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(this);
    QAccessibleInterface* const marked = list ? list->focusChild() : nullptr;
    if (!marked)
        return;
    QAccessibleEvent event(marked, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}

bool ViewFocus::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (watched == m_followed && !m_followed->isHidden() && (type == QEvent::Move || type == QEvent::Resize))
        setGeometry(m_followed->geometry());
    if (type == QEvent::MouseButtonPress)
        setFocus(Qt::MouseFocusReason);
    return QWidget::eventFilter(watched, event);
}
