#include "common/keyuse.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>

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
    const bool key = event->type() == QEvent::KeyPress;
    const bool press = event->type() == QEvent::MouseButtonPress;
    if ((key || press) && m_leads != key) {
        m_leads = key;
        emit changed();
    }
    return QObject::eventFilter(watched, event);
}
