#include "views/viewnotice.h"

#include "common/style.h"
#include "common/textfit.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QPainter>

namespace {
constexpr int margin = 24; // to both sides
constexpr int lineGap = 8;
} // namespace

ViewNotice::ViewNotice(QAbstractScrollArea* view) : QWidget(view), m_view(view)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    // Not in the viewport itself, which takes what lies in it along when it scrolls.
    view->viewport()->installEventFilter(this);
}

void ViewNotice::say(const QString& heading, const QString& line)
{
    if (heading == m_heading && line == m_line)
        return;
    m_heading = heading;
    m_line = line;
    setAccessibleName(QStringList({heading, line}).join(QLatin1Char('\n')).trimmed());
    setGeometry(m_view->viewport()->geometry());
    setVisible(!heading.isEmpty());
    raise();
    update();
}

bool ViewNotice::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
        setGeometry(m_view->viewport()->geometry());
    return QWidget::eventFilter(watched, event);
}

void ViewNotice::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QFont headingFont = Style::font(16);
    const QFontMetrics metrics(headingFont);
    const QRect place = rect().adjusted(margin, 0, -margin, 0);
    const auto fits = [&](const QString& text) { return metrics.horizontalAdvance(text) <= place.width(); };
    const int middle = height() / 2;
    painter.setFont(headingFont);
    painter.setPen(Style::ink);
    painter.drawText(QRect(place.left(), middle - metrics.height(), place.width(), metrics.height()),
                     Qt::AlignCenter | Qt::TextSingleLine, TextFit::elided(m_heading, fits));
    painter.setFont(Style::font(12));
    painter.setPen(Style::muted);
    painter.drawText(place.adjusted(0, middle + lineGap, 0, 0),
                     Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, m_line);
}
