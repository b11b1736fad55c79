#include "common/paintedbutton.h"

#include <QKeyEvent>

PaintedButton::PaintedButton(QWidget* parent) : QAbstractButton(parent)
{
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
}

void PaintedButton::keyPressEvent(QKeyEvent* event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && event->modifiers().testFlag(Qt::ControlModifier))
        event->ignore(); // what that does is not this button's
    else if (enter)
        click();
    else
        QAbstractButton::keyPressEvent(event);
}
