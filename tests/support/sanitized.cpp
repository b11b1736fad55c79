#include "sanitized.h"

#include <QGuiApplication>
#include <QScreen>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
const bool sanitized = true;
#else
const bool sanitized = false;
#endif

/// Qt's offscreen platform never deletes its one screen. As long as somebody knows where that lies it is no
/// leak: to give leaks their names, and then to look past this one, took half of a short test's time.
const QPlatformScreen* screenOfTest = nullptr;

static void rememberScreen()
{
    if (const QScreen* const screen = QGuiApplication::primaryScreen())
        screenOfTest = screen->handle();
}
Q_COREAPP_STARTUP_FUNCTION(rememberScreen)
