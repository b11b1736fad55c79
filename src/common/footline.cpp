#include "common/footline.h"

#include "common/screenreader.h"
#include "common/style.h"
#include "common/textfit.h"
#include "common/textlink.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace {
constexpr int endMargin = 12; // at both ends
constexpr int linkGap = 10;
constexpr qreal markRadius = 6;
constexpr int markWidth = 19; // with the gap to the text

/// Breaks would leave a part of the text outside.
QString onOneLine(QString text)
{
    for (QChar& character : text)
        if (character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
            character == QChar::ParagraphSeparator)
            character = QLatin1Char(' ');
    return text;
}

/// What Tab comes from; the widget itself where there is nothing else.
QWidget* beforeInTabOrder(const QWidget& widget)
{
    QWidget* former = widget.previousInFocusChain();
    while (former != &widget && former->focusPolicy() == Qt::NoFocus)
        former = former->previousInFocusChain();
    return former;
}

void paintMark(QPainter& painter, const QPointF& centre)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Style::danger);
    painter.drawEllipse(centre, markRadius, markRadius);
    painter.setBrush(Style::textOnColour);
    painter.drawRoundedRect(QRectF(centre.x() - 0.8, centre.y() - 3.6, 1.6, 4.6), 0.8, 0.8);
    painter.drawEllipse(centre + QPointF(0, 3), 1, 1);
}
} // namespace

FootLine::FootLine(QWidget* parent) : QWidget(parent), m_offer(new TextLink(QString(), this))
{
    ScreenReader::setRole(*this, QAccessible::StatusBar);
    setFont(Style::font(12));
    m_offer->hide();
    connect(m_offer, &TextLink::clicked, this, [this] {
        const std::function<void()> act = m_offered; // which may offer something else
        act();
    });
}

void FootLine::offer(const FootText::Link& link)
{
    m_offered = link.act;
    m_offer->setText(link.caption);
    m_offer->setAccessibleName(link.caption);
    m_offer->setToolTip(link.tip.isEmpty() ? QString() : TextFit::tip(link.tip));
    m_offer->setVisible(!link.caption.isEmpty());
    place();
}

void FootLine::comeBefore(const QWidget& next)
{
    setTabOrder(beforeInTabOrder(next), m_offer);
}

void FootLine::tell(const FootText& told)
{
    m_told = told;
    m_told.text = onOneLine(told.text);
    makeLinks();
    place();
    setAccessibleName(m_told.text);
    if (m_told.text.isEmpty())
        return;
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

/// One that is gone may be the one that is being clicked.
void FootLine::drop(TextLink* link)
{
    link->hide();
    link->deleteLater();
}

void FootLine::addLink(const FootText::Link& wanted)
{
    auto* link = new TextLink(wanted.caption, this);
    connect(link, &TextLink::clicked, this, [this, link, once = wanted.once, act = wanted.act] {
        if (once && m_links.removeOne(link)) {
            drop(link);
            place();
        }
        act();
    });
    m_links.append(link);
    link->show();
}

void FootLine::makeLinks()
{
    for (TextLink* link : qAsConst(m_links))
        drop(link);
    m_links.clear();
    for (const FootText::Link& wanted : qAsConst(m_told.links))
        addLink(wanted);
    QWidget* former = beforeInTabOrder(*m_offer);
    for (TextLink* link : qAsConst(m_links)) {
        setTabOrder(former, link);
        former = link;
    }
    if (!m_links.isEmpty())
        setTabOrder(m_links.last(), m_offer);
}

QVector<TextLink*> FootLine::shownLinks() const
{
    QVector<TextLink*> links = m_links;
    if (!m_offer->isHidden())
        links.append(m_offer);
    return links;
}

int FootLine::textLeft() const
{
    return endMargin + (m_told.failed ? markWidth : 0);
}

void FootLine::place()
{
    int room = width() - textLeft() - endMargin;
    const QVector<TextLink*> links = shownLinks();
    for (const TextLink* link : links)
        room -= linkGap + link->sizeHint().width();
    const QFontMetrics metrics = fontMetrics();
    const auto fits = [&](const QString& candidate) { return metrics.horizontalAdvance(candidate) <= room; };
    m_shown = m_told.text.isEmpty() ? QString() : TextFit::elided(m_told.text, fits);
    int x = textLeft() + metrics.horizontalAdvance(m_shown);
    for (TextLink* link : links) {
        const QSize size = link->sizeHint();
        x += linkGap;
        // As much above as below: its words stand on the line of the text.
        const int unused = (height() - size.height()) / 2;
        link->setGeometry(x, unused, size.width(), height() - 2 * unused);
        x += size.width();
    }
    setToolTip(m_shown == m_told.text ? QString() : m_told.text);
    update();
}

void FootLine::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    place();
}

bool FootLine::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || toolTip().isEmpty())
        return QWidget::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), TextFit::tip(toolTip()), this);
    return true;
}

void FootLine::paintEvent(QPaintEvent*)
{
    if (m_shown.isEmpty())
        return;
    QPainter painter(this);
    if (m_told.failed)
        paintMark(painter, QPointF(endMargin + markRadius, height() / 2.0));
    painter.setPen(Style::text);
    painter.setLayoutDirection(Qt::LeftToRight);
    painter.drawText(rect().adjusted(textLeft(), 0, 0, 0), Qt::AlignVCenter | Qt::TextSingleLine, m_shown);
}
