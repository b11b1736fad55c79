#include "common/screenplace.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <vector>

QRect ScreenPlace::availableAt(const QPoint& point)
{
    const QScreen* screen = QGuiApplication::screenAt(point);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry() : QRect();
}

QPoint ScreenPlace::inside(const QRect& window, const QRect& screen)
{
    const auto kept = [](int start, int length, int first, int room) {
        return qMax(first, qMin(start, first + room - length));
    };
    return {kept(window.x(), window.width(), screen.x(), screen.width()),
            kept(window.y(), window.height(), screen.y(), screen.height())};
}

bool ScreenPlace::graspable(const QRect& window, const QVector<QRect>& screens)
{
    const QRect edge(window.topLeft(), QSize(window.width(), 20));
    const int enough = qMin(60, window.width());
    return std::any_of(screens.begin(), screens.end(), [&](const QRect& screen) {
        const QRect shown = screen & edge;
        return shown.height() == edge.height() && shown.width() >= enough;
    });
}

bool ScreenPlace::graspable(const QRect& window)
{
    QVector<QRect> screens;
    for (const QScreen* screen : QGuiApplication::screens())
        screens.append(screen->availableGeometry());
    return graspable(window, screens);
}

QMargins ScreenPlace::frameAround(const QWidget& window)
{
    QMargins frame = window.windowHandle() ? window.windowHandle()->frameMargins() : QMargins();
    for (const QWindow* other : QGuiApplication::topLevelWindows())
        if (frame.isNull() && other->isVisible() && other->type() == Qt::Window)
            frame = other->frameMargins();
    return frame;
}

QPoint ScreenPlace::beside(const QRect& other, const QSize& size, const QRect& screen)
{
    const int leftOf = other.x() - size.width();
    const bool roomLeft = leftOf >= screen.x();
    const bool roomRight = other.x() + other.width() + size.width() <= screen.x() + screen.width();
    const int x = !roomRight && roomLeft ? leftOf : other.x() + other.width();
    return inside(QRect(QPoint(x, other.y()), size), screen);
}

QPoint ScreenPlace::besideClearOf(const QVector<QRect>& seen, const QRect& other, const QSize& size,
                                  const QRect& screen)
{
    const auto covered = [&](const QPoint& place) {
        std::vector<int> areas;
        for (const QRect& each : seen) {
            const QRect common = each & QRect(place, size);
            areas.push_back(common.width() * common.height());
        }
        return areas;
    };
    QPoint best = beside(other, size, screen);
    std::vector<QRect> edges = {screen, other};
    edges.insert(edges.end(), seen.begin(), seen.end());
    std::vector<int> lefts;
    std::vector<int> tops;
    for (const QRect& edge : edges) {
        lefts.insert(lefts.end(), {edge.left() - size.width(), edge.left(), edge.right() + 1,
                                   edge.right() + 1 - size.width()});
        tops.insert(tops.end(), {edge.bottom() + 1 - size.height(), edge.bottom() + 1,
                                 edge.top() - size.height(), edge.top()});
    }
    for (const int top : tops)
        for (const int left : lefts) {
            const QPoint place = inside(QRect(QPoint(left, top), size), screen);
            if (covered(place) < covered(best))
                best = place;
        }
    return best;
}

QRect ScreenPlace::dialogPlace(const QWidget& window)
{
    QRect place(0, 0, 442, 180); // the faces of questions, with a frame
    place.moveCenter(window.frameGeometry().center());
    return place;
}

bool ScreenPlace::someStayOnTop()
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.begin(), windows.end(), [](const QWindow* window) {
        return window->isVisible() && window->flags().testFlag(Qt::WindowStaysOnTopHint);
    });
}

void ScreenPlace::putOver(QWidget& dialog, const QRect& part, QWidget& window)
{
    const QPoint middle = window.frameGeometry().center();
    const QRect wanted(middle - QRect(QPoint(0, 0), part.size()).center(), part.size());
    dialog.move(inside(wanted, availableAt(middle)) - part.topLeft());
    if (!window.windowHandle())
        return;
    dialog.setWindowFlag(Qt::WindowStaysOnTopHint, someStayOnTop());
    const QWidget* const parent = dialog.parentWidget();
    if (parent && parent->window() == &window)
        return; // it belongs there by itself; asked for its handle, it would make windows of all beside it
    dialog.winId(); // makes the window handle
    dialog.windowHandle()->setTransientParent(window.windowHandle());
}
