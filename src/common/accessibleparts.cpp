#include "common/accessibleparts.h"

#include "common/qimagewidget.h"
#include "common/qsliderctrl.h"
#include "common/retractlabel.h"

#include <QTextDocument>
#include <QTextDocumentFragment>

AccessibleText::AccessibleText(QLabel* label) : QAccessibleWidget(label) {}

QLabel* AccessibleText::label() const
{
    return qobject_cast<QLabel*>(widget());
}

/// Not what is left of a text that does not fit.
QString AccessibleText::shown() const
{
    if (const auto* whole = qobject_cast<const RetractLabel*>(label()))
        return whole->getName();
    QString text = label()->text();
    if (label()->buddy())
        text.remove(QLatin1Char('&')); // which marks a letter
    const bool isRich = label()->textFormat() == Qt::RichText ||
                        (label()->textFormat() == Qt::AutoText && Qt::mightBeRichText(text));
    return isRich ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
}

bool AccessibleText::isSilent() const
{
    return text(QAccessible::Name).isEmpty();
}

QAccessible::Role AccessibleText::role() const
{
    return shown().isEmpty() ? QAccessible::Graphic : QAccessible::StaticText;
}

QString AccessibleText::text(QAccessible::Text which) const
{
    const QString given = QAccessibleWidget::text(which);
    if (which == QAccessible::Name && given.isEmpty())
        return shown();
    // The tool tip of a text that does not fit says the same.
    return which == QAccessible::Description && given == shown() ? QString() : given;
}

QVector<QPair<QAccessibleInterface*, QAccessible::Relation>>
AccessibleText::relations(QAccessible::Relation match) const
{
    auto all = QAccessibleWidget::relations(match);
    if (label()->buddy() && match.testFlag(QAccessible::Labelled))
        all.append({QAccessible::queryAccessibleInterface(label()->buddy()), QAccessible::Labelled});
    return all;
}

bool AccessiblePicture::takesPresses() const
{
    return widget()->isEnabled() && !widget()->toolTip().isEmpty();
}

bool AccessiblePicture::isSilent() const
{
    return text(QAccessible::Name).isEmpty();
}

QAccessible::Role AccessiblePicture::role() const
{
    return takesPresses() ? QAccessible::PushButton : QAccessible::Graphic;
}

QStringList AccessiblePicture::actionNames() const
{
    return takesPresses() ? QStringList(pressAction()) : QStringList();
}

/// Later: what asks for it waits for the answer, and a press may open a dialog.
void AccessiblePicture::doAction(const QString& name)
{
    if (name == pressAction() && takesPresses())
        QMetaObject::invokeMethod(widget(), "widgetClick", Qt::QueuedConnection);
}

qSliderCtrl* AccessibleSlider::slider() const
{
    return qobject_cast<qSliderCtrl*>(widget());
}

void* AccessibleSlider::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::ValueInterface)
        return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QVariant AccessibleSlider::currentValue() const
{
    return double(slider()->minimum()) + double(slider()->getValue());
}

void AccessibleSlider::setCurrentValue(const QVariant& value)
{
    const double range = double(slider()->maximum() - slider()->minimum());
    if (range > 0)
        slider()->moveTo((value.toDouble() - double(slider()->minimum())) / range);
}

QVariant AccessibleSlider::maximumValue() const
{
    return double(slider()->maximum());
}

QVariant AccessibleSlider::minimumValue() const
{
    return double(slider()->minimum());
}
