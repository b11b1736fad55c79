#include "common/focusmark.h"

#include "common/keyuse.h"
#include "common/stripbutton.h"
#include "common/style.h"

#include <QApplication>
#include <QEvent>
#include <QLineEdit>
#include <QPainter>

namespace {
constexpr int outlineGap = 1; // between the shape and its outline
constexpr int outlineThickness = 2;
constexpr int outlineReach = outlineGap + outlineThickness;
constexpr qreal smallCorner = 4; // of boxes, links and views

/// A field has a ring of its own, for the mouse as well.
bool showsItself(const QWidget* widget)
{
    return qobject_cast<const QLineEdit*>(widget);
}
} // namespace

FocusMark::FocusMark(QWidget* window) : QWidget(window)
{
    setObjectName(QStringLiteral("m_focusMark"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        follow(now && now->window() == parentWidget() && !showsItself(now) ? now : nullptr);
    });
    connect(&KeyUse::instance(), &KeyUse::changed, this, &FocusMark::place);
}

void FocusMark::follow(QWidget* focus)
{
    watch(false);
    m_focus = focus;
    watch(true);
    place();
}

/// Whatever moves or hides it, or a part of it.
void FocusMark::watch(bool on)
{
    for (QWidget* each = m_focus; each && each != parentWidget(); each = each->parentWidget()) {
        if (on)
            each->installEventFilter(this);
        else
            each->removeEventFilter(this);
    }
}

bool FocusMark::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::Hide:
        place();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

/// Without what a scroll area has scrolled away, in coordinates of the window.
QRect FocusMark::visiblePart() const
{
    QRect part = m_focus->rect();
    for (const QWidget* each = m_focus; each != parentWidget(); each = each->parentWidget())
        part = part.translated(each->pos()) & each->parentWidget()->rect();
    return part;
}

void FocusMark::place()
{
    const bool wanted =
        m_focus && m_focus != parentWidget() && parentWidget()->isAncestorOf(m_focus) && m_focus->isVisible();
    const QRect part = wanted && KeyUse::instance().leads() ? visiblePart() : QRect();
    setVisible(!part.isEmpty());
    if (part.isEmpty())
        return;
    setGeometry(part.adjusted(-outlineReach, -outlineReach, outlineReach, outlineReach) &
                parentWidget()->rect());
    raise();
}

void FocusMark::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Style::editorFocus, outlineThickness));
    const auto* const button = dynamic_cast<const StripButton*>(m_focus.data());
    const qreal corner = button ? button->corner() : smallCorner;
    const qreal half = outlineThickness / 2.0;
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), corner + half, corner + half);
}
