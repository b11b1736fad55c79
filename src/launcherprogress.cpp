#include "launcherprogress.h"

#ifdef MELODRIFT_X11
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QVariant>

namespace {
constexpr int nothing = -1;
int shownPercent = nothing;

/// Where none is named the toolkit would have one started.
bool hasSessionBus()
{
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/bus"));
}

void tell(double progress, bool isVisible)
{
    if (!hasSessionBus())
        return;
    QDBusMessage update = QDBusMessage::createSignal(QStringLiteral("/melodrift"),
                                                     QStringLiteral("com.canonical.Unity.LauncherEntry"),
                                                     QStringLiteral("Update"));
    update << QStringLiteral("application://melodrift.desktop")
           << QVariantMap{{QStringLiteral("progress"), progress},
                          {QStringLiteral("progress-visible"), isVisible}};
    QDBusConnection::sessionBus().send(update); // fails where nobody is at the other end
}
} // namespace

void LauncherProgress::show(int done, int total)
{
    const int percent = total > 0 ? int(qint64(done) * 100 / total) : 0;
    if (percent == shownPercent)
        return;
    shownPercent = percent;
    tell(percent / 100.0, true);
}

void LauncherProgress::end()
{
    if (shownPercent == nothing)
        return;
    shownPercent = nothing;
    tell(0, false);
}
#else
void LauncherProgress::show(int /*done*/, int /*total*/) {}
void LauncherProgress::end() {}
#endif
