#include "views/viewveil.h"

#include "common/style.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QPainter>

ViewVeil::ViewVeil(QAbstractScrollArea* view) : QWidget(view), m_view(view)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    view->installEventFilter(this);
    // Not in the viewport itself, which takes what lies in it along when it scrolls.
    view->viewport()->installEventFilter(this);
    place();
}

void ViewVeil::setLocked(bool locked)
{
    m_locked = locked;
    if (locked)
        m_view->viewport()->setCursor(Qt::ForbiddenCursor);
    else
        m_view->viewport()->unsetCursor();
    place();
}

void ViewVeil::place()
{
    setGeometry(m_view->viewport()->geometry());
    setVisible(m_locked || !m_view->isEnabled());
    raise();
}

bool ViewVeil::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::Resize || type == QEvent::Move || type == QEvent::EnabledChange)
        place();
    return QWidget::eventFilter(watched, event);
}

void ViewVeil::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), Style::veil);
}
