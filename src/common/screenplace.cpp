#include "common/screenplace.h"

#include <QGuiApplication>
#include <QScreen>

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
