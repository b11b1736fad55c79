#include "common/retractlabel.h"

#include "common/textfit.h"

#include <QHelpEvent>
#include <QLineEdit>
#include <QPainter>
#include <QRegularExpression>
#include <QToolTip>

namespace {
const QRegularExpression& forbidden()
{
    static const QRegularExpression characters(QStringLiteral("[/:*\"<>|]"));
    return characters;
}
} // namespace

RetractLabel::RetractLabel(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    installEventFilter(this);
}

void RetractLabel::setText(const QString& text)
{
    m_strName = text;
    showFitting();
}

void RetractLabel::resizeEvent(QResizeEvent* event)
{
    QLabel::resizeEvent(event);
    showFitting();
}

void RetractLabel::showFitting()
{
    const QString shown = TextFit::elided(m_strName, fontMetrics(), size());
    setToolTip(shown == m_strName ? QString() : m_strName);
    QLabel::setText(shown);
}

void RetractLabel::paintEvent(QPaintEvent*)
{
    // Laid out as it was measured: QLabel itself would wrap between words only.
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(rect(), int(alignment()) | Qt::TextWrapAnywhere, text());
}

void RetractLabel::setCanEditText(bool edit)
{
    if (!edit) {
        if (m_pLineEdit)
            m_pLineEdit->hide();
        return;
    }
    makeEditor();
    // A name from elsewhere may hold what the editor refuses.
    m_strOpened = m_strName.left(extensionStart()).remove(forbidden());
    m_pLineEdit->setText(m_strOpened);
    m_pLineEdit->setGeometry(rect());
    m_pLineEdit->show();
    m_pLineEdit->selectAll();
    m_pLineEdit->setFocus();
}

void RetractLabel::makeEditor()
{
    if (m_pLineEdit)
        return;
    m_pLineEdit = new QLineEdit(this);
    connect(m_pLineEdit, SIGNAL(returnPressed()), this, SLOT(RenameOK()));
    connect(m_pLineEdit, SIGNAL(textChanged(QString)), this, SLOT(NameChange(QString)));
    connect(m_pLineEdit, SIGNAL(editingFinished()), this, SLOT(RenameOK()));
}

/// Where the name's last dot is; its end without one.
int RetractLabel::extensionStart() const
{
    const int dot = m_strName.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? m_strName.size() : dot;
}

void RetractLabel::NameChange(const QString& text)
{
    if (!text.contains(forbidden()))
        m_strLastValid = text;
    else if (m_pLineEdit)
        m_pLineEdit->setText(m_strLastValid);
}

void RetractLabel::RenameOK()
{
    // Return finishes the editing as well, and so does hiding the editor: only the first call counts.
    if (!m_pLineEdit || m_pLineEdit->isHidden())
        return;
    m_pLineEdit->hide();
    const QString name = m_pLineEdit->text() + m_strName.mid(extensionStart());
    if (m_pLineEdit->text() == m_strOpened || name == m_strName)
        return;
    setText(name);
    emit emitChangeName();
}

bool RetractLabel::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip || toolTip().isEmpty())
        return QLabel::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), TextFit::tip(toolTip()), this);
    return true;
}

bool RetractLabel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != this || event->type() != QEvent::WindowDeactivate)
        return false;
    if (m_pLineEdit)
        m_pLineEdit->hide();
    return true;
}
