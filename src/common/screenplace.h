#pragma once

#include <QMargins>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QVector>

class QWidget;

/// Where windows go on screens.
namespace ScreenPlace {
/// What of the screen at the point, or else of the nearest known one, windows may take.
QRect availableAt(const QPoint& point);
/// The top-left corner at which the window lies inside the screen, moved as little as that takes; a window
/// larger than the screen keeps its top-left corner in sight.
QPoint inside(const QRect& window, const QRect& screen);
/// Whether some screen shows enough of the window's upper edge to grasp it there.
bool graspable(const QRect& window, const QVector<QRect>& screens);
/// The same for the screens that there are.
bool graspable(const QRect& window);
/// What the window system puts around the window. Before it is shown this may have to be guessed by the other
/// windows.
QMargins frameAround(const QWidget& window);
/// The top-left corner at which a window of the size lies inside the screen, right of the other window where
/// there is room, else left of it, else as far right as it goes.
QPoint beside(const QRect& other, const QSize& size, const QRect& screen);
/// The same, unless that covers something of what is to be seen: then where it covers as little as can be of
/// the first of it, of that as little of the next, and so on.
QPoint besideClearOf(const QVector<QRect>& seen, const QRect& other, const QSize& size, const QRect& screen);
/// What dialogs take at most that are put over the window.
QRect dialogPlace(const QWidget& window);
/// Whether some window in sight stays on top of all others.
bool someStayOnTop();
/// Keeps the dialog above the other window, and those that stay on top of all, and puts `part` of it, in its
/// coordinates, over that window's middle, inside the screen. Before it is shown.
void putOver(QWidget& dialog, const QRect& part, QWidget& window);
} // namespace ScreenPlace
