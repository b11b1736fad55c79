#include "navigationbutton.h"

#include <QPainter>
#include <QPainterPath>

namespace {
const QColor ink(0x28, 0x40, 0x4F);
const QColor inkChosen(0x0B, 0x5C, 0x93);
const QColor inkLocked(0x5E, 0x74, 0x82);
const QColor slate(0x56, 0x72, 0x84);
const QColor accent(0x0F, 0x79, 0xB8);
const QColor accentSoft(0x8C, 0xC4, 0xE4);
const QColor amber(0xE8, 0xA3, 0x3A);
const QColor amberEdge(0xB9, 0x77, 0x1B);
const QColor amberInk(0x4A, 0x2C, 0x05);

// Every mark is drawn around the origin and fills about sixteen points.

QPainterPath noteHead(qreal x, qreal y)
{
    QPainterPath head;
    head.addEllipse(QPointF(), 2.9, 2.3);
    return QTransform().translate(x, y).rotate(-18).map(head);
}

void paintNote(QPainter& painter, const QColor& ink)
{
    QPainterPath note;
    note.setFillRule(Qt::WindingFill);
    note.moveTo(-4, 5);
    note.lineTo(-4, -4.4);
    note.quadTo(-4, -5.3, -3.1, -5.5);
    note.lineTo(5.6, -7.4);
    note.quadTo(7, -7.7, 7, -6.3);
    note.lineTo(7, 3);
    note.lineTo(5, 3);
    note.lineTo(5, -3.4);
    note.lineTo(-2, -1.9);
    note.lineTo(-2, 5);
    note.closeSubpath();
    note.addPath(noteHead(-4.8, 5));
    note.addPath(noteHead(4.2, 3));
    painter.fillPath(note, ink);
}

void paintQuestion(QPainter& painter)
{
    painter.setPen(QPen(amberEdge, 1));
    painter.setBrush(amber);
    painter.drawEllipse(QPointF(), 7.5, 7.5);
    QPainterPath hook;
    hook.moveTo(-2.4, -1.9);
    hook.cubicTo(-2.4, -5.3, 2.6, -5.3, 2.6, -2);
    hook.cubicTo(2.6, 0.1, 0, 0, 0, 2);
    painter.strokePath(hook, QPen(amberInk, 1.7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setPen(Qt::NoPen);
    painter.setBrush(amberInk);
    painter.drawEllipse(QPointF(0, 4.7), 1.1, 1.1);
}

void paintCopies(QPainter& painter)
{
    QPainterPath back;
    back.addRoundedRect(QRectF(-8, -8, 11, 11), 2.5, 2.5);
    // A gap of one point parts the two.
    QPainterPath gap;
    gap.addRoundedRect(QRectF(-4, -4, 13, 13), 3.5, 3.5);
    painter.fillPath(back.subtracted(gap), accentSoft);
    QPainterPath front;
    front.addRoundedRect(QRectF(-3, -3, 11, 11), 2.5, 2.5);
    painter.fillPath(front, accent);
}
} // namespace

NavigationButton::NavigationButton(QWidget* parent) : QImageButton(parent)
{
    setChosen(false);
}

void NavigationButton::setChosen(bool chosen)
{
    m_chosen = chosen;
    QPalette captions = palette();
    captions.setColor(QPalette::ButtonText, chosen ? inkChosen : ink);
    captions.setColor(QPalette::Disabled, QPalette::ButtonText, chosen ? inkChosen : inkLocked);
    setPalette(captions);
    update();
}

int NavigationButton::shownCell() const
{
    if (m_chosen)
        return StateDisabled;
    return isEnabled() ? state() : int(StateNormal);
}

void NavigationButton::setMark(Mark mark)
{
    m_mark = mark;
    update();
}

void NavigationButton::paintEvent(QPaintEvent* event)
{
    QImageButton::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(18, 22); // on the caption's line
    if (m_mark == MarkNote)
        paintNote(painter, m_chosen ? accent : slate);
    else if (m_mark == MarkQuestion)
        paintQuestion(painter);
    else if (m_mark == MarkCopies)
        paintCopies(painter);
}
