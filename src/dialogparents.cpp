#include "dialogparents.h"

#include <QApplication>
#include <QEvent>
#include <QMainWindow>
#include <QWindow>

namespace {
/// The dialog that waits for an answer, or else the program's window; null where neither is shown.
QWidget* windowBelow(const QWidget* window)
{
    QWidget* const modal = QApplication::activeModalWidget();
    if (modal && modal != window)
        return modal;
    for (QWidget* other : QApplication::topLevelWidgets())
        if (other->isVisible() && qobject_cast<QMainWindow*>(other))
            return other;
    return nullptr;
}

/// Popups say where they belong by themselves.
bool isOneOfSeveral(const QWidget* window)
{
    return window && (window->windowType() == Qt::Window || window->windowType() == Qt::Dialog) &&
           !qobject_cast<const QMainWindow*>(window);
}
} // namespace

void DialogParents::keepWhereNothingCanBePlaced()
{
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        QCoreApplication::instance()->installEventFilter(new DialogParents(QCoreApplication::instance()));
}

bool DialogParents::eventFilter(QObject* watched, QEvent* event)
{
    // Comes with the handle, before the window system knows of the window.
    if (event->type() != QEvent::WinIdChange)
        return false;
    const auto* const window = qobject_cast<QWidget*>(watched);
    if (!isOneOfSeveral(window) || !window->windowHandle() || window->windowHandle()->transientParent())
        return false;
    if (QWidget* const below = windowBelow(window))
        window->windowHandle()->setTransientParent(below->windowHandle());
    return false;
}
