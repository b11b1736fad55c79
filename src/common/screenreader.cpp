#include "common/screenreader.h"

#include "common/accessibleheader.h"
#include "common/accessiblepanel.h"
#include "common/accessibleparts.h"
#include "common/sortheader.h"

#include <QLabel>
#include <QWidget>

namespace {
/// A widget that is being destroyed has left the chain of focus. What was made for it now would never go.
bool isGoing(const QWidget& widget)
{
    return !widget.nextInFocusChain();
}

/// Asked for the class of the object and those that it derives from, until one is known.
QAccessibleInterface* partOf(const QString& className, QObject* object)
{
    if (className == QLatin1String("QApplication"))
        return new AccessibleProgram;
    auto* const widget = qobject_cast<QWidget*>(object);
    if (!widget || isGoing(*widget))
        return nullptr;
    if (className == QLatin1String("QLabel"))
        return new AccessibleText(static_cast<QLabel*>(widget));
    if (className == QLatin1String("QImageWidget") && !AccessiblePanel::holdsWidgets(*widget))
        return new AccessiblePicture(widget);
    if (className == QLatin1String("SortHeader"))
        return new AccessibleHeader(static_cast<SortHeader*>(widget));
    if (className == QLatin1String("qSliderCtrl"))
        return new AccessibleSlider(widget);
    if (className == QLatin1String("QWidget") || className == QLatin1String("QDialog") ||
        className == QLatin1String("QMainWindow"))
        return new AccessiblePanel(widget);
    return nullptr;
}
} // namespace

void ScreenReader::install()
{
    QAccessible::installFactory(partOf); // which counts once
}

void ScreenReader::setRole(QWidget& widget, QAccessible::Role role)
{
    install();
    widget.setProperty(AccessiblePanel::roleProperty, int(role));
}

void ScreenReader::announce(QWidget& widget)
{
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent event(&widget, QAccessible::Focus);
    QAccessible::updateAccessibility(&event);
}
