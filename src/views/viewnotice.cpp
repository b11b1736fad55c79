#include "views/viewnotice.h"

#include "common/style.h"
#include "common/textfit.h"

#include <QFontMetrics>
#include <QPainter>

namespace {
constexpr int sideMargin = 24; // to both sides
constexpr int pictureGap = 14; // below the picture
constexpr int headingGap = 8;
constexpr int lineGap = 4;
constexpr int buttonGap = 18; // above the button

const char* fileOf(EmptyText::Picture picture)
{
    switch (picture) {
    case EmptyText::Picture::Scan:
        return "view_scan.png";
    case EmptyText::Picture::Tidy:
        return "view_tidy.png";
    case EmptyText::Picture::Nothing:
        break;
    }
    return "view_nothing.png";
}

QFont headingFont()
{
    return Style::font(16);
}

QFont lineFont()
{
    return Style::font(12);
}
} // namespace

ViewNotice::ViewNotice(QWidget& button, QWidget* parent) : QWidget(parent), m_button(button)
{
    setObjectName(QStringLiteral("m_viewNotice"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    m_button.hide();
}

void ViewNotice::say(const EmptyText& text)
{
    if (text.heading.isEmpty() && m_text.heading.isEmpty())
        return;
    m_text = text;
    QStringList said(text.heading);
    for (const EmptyText::Line& line : text.lines)
        said.append(line.text);
    setAccessibleName(said.join(QLatin1Char('\n')));
    const bool speaks = !text.heading.isEmpty();
    if (speaks) {
        arrange();
        raise();
        m_button.raise();
    }
    setVisible(speaks);
    m_button.setVisible(speaks && text.offersLibrary);
    update();
}

const SkinPicture& ViewNotice::picture() const
{
    const auto known = m_pictures.find(m_text.picture);
    if (known != m_pictures.end())
        return known->second;
    return m_pictures.emplace(m_text.picture, SkinPicture(SkinPicture::path(fileOf(m_text.picture))))
        .first->second;
}

/// All of it one below the other, and together in the middle.
void ViewNotice::arrange()
{
    if (m_text.heading.isEmpty())
        return;
    const int width = qMax(this->width() - 2 * sideMargin, 1);
    int bottom = 0;
    const auto place = [&](int height) {
        bottom += height;
        return QRect(sideMargin, bottom - height, width, height);
    };
    const QSize pictureSize = picture().size();
    m_picturePlace = QRect(QPoint((this->width() - pictureSize.width()) / 2, 0), pictureSize);
    bottom = pictureSize.height() + pictureGap;
    const QFontMetrics headings(headingFont());
    m_heading = {place(headings.height()), TextFit::elided(m_text.heading, [&](const QString& text) {
                     return headings.horizontalAdvance(text) <= width;
                 })};
    bottom += headingGap;
    const QFontMetrics metrics(lineFont());
    m_lines.clear();
    for (const EmptyText::Line& line : m_text.lines) {
        const QString text = line.isPath ? metrics.elidedText(line.text, Qt::ElideMiddle, width) : line.text;
        const QRect needed = metrics.boundingRect(QRect(0, 0, width, height()), Qt::TextWordWrap, text);
        m_lines.append({place(line.isPath ? metrics.height() : needed.height()), text});
        bottom += lineGap;
    }
    if (m_text.offersLibrary)
        bottom += buttonGap + m_button.height();
    const int top = qMax((height() - bottom) / 2, 0);
    m_picturePlace.translate(0, top);
    m_heading.place.translate(0, top);
    for (Piece& line : m_lines)
        line.place.translate(0, top);
    m_button.move(geometry().topLeft() +
                  QPoint((this->width() - m_button.width()) / 2, top + bottom - m_button.height()));
}

void ViewNotice::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    arrange();
}

void ViewNotice::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    arrange();
}

void ViewNotice::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(m_picturePlace, picture().image(painter));
    painter.setFont(headingFont());
    painter.setPen(Style::ink);
    painter.drawText(m_heading.place, Qt::AlignCenter | Qt::TextSingleLine, m_heading.text);
    painter.setFont(lineFont());
    painter.setPen(Style::muted);
    for (int i = 0; i < m_lines.size(); ++i) {
        const int wrap = m_text.lines.at(i).isPath ? Qt::TextSingleLine : Qt::TextWordWrap;
        painter.drawText(m_lines.at(i).place, Qt::AlignHCenter | Qt::AlignTop | wrap, m_lines.at(i).text);
    }
}
