#include "views/viewfocus.h"

#include <QAbstractItemView>
#include <QEvent>
#include <QHeaderView>

namespace {
constexpr QRect nowhere(-2, -2, 1, 1);
}

ViewFocus::ViewFocus(const std::array<QAbstractItemView*, 4>& views, QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("m_viewFocus"));
    setAccessibleName(QStringLiteral("Songs"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::ClickFocus);
    setGeometry(nowhere);
    for (QAbstractItemView* view : views) {
        view->installEventFilter(this);
        view->viewport()->installEventFilter(this);
        for (const QHeaderView* header : view->findChildren<QHeaderView*>())
            header->viewport()->installEventFilter(this);
    }
}

void ViewFocus::follow(const QAbstractItemView& view)
{
    m_followed = &view;
    setGeometry(view.isHidden() ? nowhere : view.geometry());
    // A window that becomes the active one takes the focus from what has no policy for it.
    setFocusPolicy(view.isHidden() ? Qt::ClickFocus : Qt::TabFocus);
    lower();
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
