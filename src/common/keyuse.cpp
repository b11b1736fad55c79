#include "common/keyuse.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPointer>

namespace {
/// Held while the mouse is used, or on the way to another window.
bool isModifier(const QEvent& event)
{
    switch (static_cast<const QKeyEvent&>(event).key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
        return true;
    default:
        return false;
    }
}
} // namespace

KeyUse::KeyUse() : QObject(QCoreApplication::instance())
{
    QCoreApplication::instance()->installEventFilter(this);
}

KeyUse& KeyUse::instance()
{
    static QPointer<KeyUse> use; // goes with the application
    if (!use)
        use = new KeyUse;
    return *use;
}

bool KeyUse::eventFilter(QObject* watched, QEvent* event)
{
    const bool key = event->type() == QEvent::KeyPress && !isModifier(*event);
    const bool press = event->type() == QEvent::MouseButtonPress;
    if ((key || press) && m_leads != key) {
        m_leads = key;
        emit changed();
    }
    return QObject::eventFilter(watched, event);
}
