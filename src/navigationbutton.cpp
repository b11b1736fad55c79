#include "navigationbutton.h"

#include "common/style.h"

#include <QPainter>
#include <QPainterPath>

namespace {
// Every mark is drawn around the origin and fills about sixteen points.

QPainterPath noteHead(qreal x, qreal y)
{
    QPainterPath head;
    head.addEllipse(QPointF(), 2.9, 2.3);
    return QTransform().translate(x, y).rotate(-18).map(head);
}

void paintNote(QPainter& painter, const QColor& colour)
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
    painter.fillPath(note, colour);
}

void paintQuestion(QPainter& painter)
{
    painter.setPen(QPen(Style::amberEdge, 1));
    painter.setBrush(Style::amber);
    painter.drawEllipse(QPointF(), 7.5, 7.5);
    QPainterPath hook;
    hook.moveTo(-2.4, -1.9);
    hook.cubicTo(-2.4, -5.3, 2.6, -5.3, 2.6, -2);
    hook.cubicTo(2.6, 0.1, 0, 0, 0, 2);
    painter.strokePath(hook, QPen(Style::amberInk, 1.7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setPen(Qt::NoPen);
    painter.setBrush(Style::amberInk);
    painter.drawEllipse(QPointF(0, 4.7), 1.1, 1.1);
}

void paintCopies(QPainter& painter)
{
    QPainterPath back;
    back.addRoundedRect(QRectF(-8, -8, 11, 11), 2.5, 2.5);
    // A gap of one point parts the two.
    QPainterPath gap;
    gap.addRoundedRect(QRectF(-4, -4, 13, 13), 3.5, 3.5);
    painter.fillPath(back.subtracted(gap), Style::markSoft);
    QPainterPath front;
    front.addRoundedRect(QRectF(-3, -3, 11, 11), 2.5, 2.5);
    painter.fillPath(front, Style::markChosen);
}
} // namespace

NavigationButton::NavigationButton(QWidget* parent) : ChoiceButton(parent)
{
    NavigationButton::setChosen(false);
}

void NavigationButton::setChosen(bool chosen)
{
    ChoiceButton::setChosen(chosen);
    setAccessibleDescription(chosen ? QStringLiteral("In sight") : QString());
    QPalette captions = palette();
    captions.setColor(QPalette::ButtonText, chosen ? Style::chosen : Style::text);
    captions.setColor(QPalette::Disabled, QPalette::ButtonText, chosen ? Style::chosen : Style::locked);
    setPalette(captions);
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
        paintNote(painter, isChosen() ? Style::markChosen : Style::mark);
    else if (m_mark == MarkQuestion)
        paintQuestion(painter);
    else if (m_mark == MarkCopies)
        paintCopies(painter);
}
