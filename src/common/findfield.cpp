#include "common/findfield.h"

#include "common/paintedbutton.h"
#include "common/style.h"

#include <QKeyEvent>
#include <QPainter>

namespace {
constexpr int fieldHeight = 26;
constexpr int widest = 280;
constexpr int narrowest = 120;
constexpr int glassRoom = 26;
constexpr int crossRoom = 24;
constexpr qreal corner = 4;
constexpr qreal disabledOpacity = 0.45; // as of buttons

void paintGlass(QPainter& painter, const QPointF& centre)
{
    painter.setPen(QPen(Style::muted, 1.6, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(centre + QPointF(-1, -1), 4.4, 4.4);
    painter.drawLine(centre + QPointF(2.4, 2.4), centre + QPointF(5.6, 5.6));
}
} // namespace

/// Clicked only: the keyboard has Escape.
class FindCross : public PaintedButton
{
public:
    using PaintedButton::PaintedButton;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(underMouse() ? Style::ink : Style::muted, 1.6, Qt::SolidLine, Qt::RoundCap));
        const QPointF centre = QRectF(rect()).center();
        painter.drawLine(centre + QPointF(-3.5, -3.5), centre + QPointF(3.5, 3.5));
        painter.drawLine(centre + QPointF(-3.5, 3.5), centre + QPointF(3.5, -3.5));
    }
};

FindField::FindField(QWidget* parent) : QLineEdit(parent), m_cross(new FindCross(this))
{
    setFont(Style::font(12));
    setFrame(false);
    setTextMargins(glassRoom, 0, crossRoom, 0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMaximumWidth(widest);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::Text, Style::ink);
    palette.setColor(QPalette::PlaceholderText, Style::muted);
    palette.setColor(QPalette::Disabled, QPalette::Text, Style::groupLine);
    palette.setColor(QPalette::Disabled, QPalette::PlaceholderText, Style::groupLine);
    setPalette(palette);
    m_cross->setFocusPolicy(Qt::NoFocus);
    m_cross->setAccessibleName(QStringLiteral("Empty the field"));
    m_cross->setToolTip(QStringLiteral("Empty the field (Esc)"));
    m_cross->hide();
    connect(m_cross, &FindCross::clicked, this, &QLineEdit::clear);
    connect(this, &QLineEdit::textChanged, m_cross,
            [this](const QString& text) { m_cross->setVisible(!text.isEmpty()); });
}

QSize FindField::sizeHint() const
{
    return {widest, fieldHeight};
}

QSize FindField::minimumSizeHint() const
{
    return {narrowest, fieldHeight};
}

void FindField::begin()
{
    setFocus(Qt::ShortcutFocusReason);
    selectAll();
}

/// Escape is the field's own before it is anyone's shortcut.
bool FindField::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void FindField::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (key != Qt::Key_Escape && key != Qt::Key_Return && key != Qt::Key_Enter) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    if (key == Qt::Key_Escape)
        clear();
    emit left();
}

void FindField::focusInEvent(QFocusEvent* event)
{
    QLineEdit::focusInEvent(event);
    emit begun();
}

void FindField::resizeEvent(QResizeEvent* event)
{
    QLineEdit::resizeEvent(event);
    m_cross->setGeometry(width() - crossRoom, 1, crossRoom - 2, height() - 2);
}

void FindField::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setOpacity(isEnabled() ? 1 : disabledOpacity);
        painter.setPen(hasFocus() ? QPen(Style::editorFocus, 2) : QPen(Style::editorLine, 1));
        painter.setBrush(Qt::white);
        const qreal inset = hasFocus() ? 1 : 0.5;
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), corner, corner);
        paintGlass(painter, QPointF(glassRoom / 2.0 + 1, height() / 2.0));
    }
    QLineEdit::paintEvent(event);
}
