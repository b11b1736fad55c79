#include "common/choicebutton.h"

#include "common/style.h"

ChoiceButton::ChoiceButton(QWidget* parent) : QImageButton(parent) {}

void ChoiceButton::setChosen(bool chosen)
{
    m_chosen = chosen;
    update();
}

int ChoiceButton::shownCell() const
{
    if (m_chosen)
        return StateDisabled;
    return isEnabled() ? state() : int(StateNormal);
}

/// The chosen one may be disabled for being that: it is locked with all that lies around it alone.
qreal ChoiceButton::cellOpacity() const
{
    const QWidget* const lockable = m_chosen ? parentWidget() : this;
    return !lockable || lockable->isEnabled() ? 1 : Style::lockedOpacity;
}
