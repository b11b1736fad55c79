#include "desktopscale.h"

#include <QList>
#include <QString>

#ifdef MELODRIFT_X11
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>
#endif

namespace {
constexpr qreal usualResolution = 96;
constexpr qreal densest = 4;

#ifdef MELODRIFT_X11
/// What the toolkit will show its windows on; under Wayland it learns the density there.
bool startsOnX11()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (!platform.isEmpty())
        return platform.startsWith("xcb");
    const bool isWayland =
        qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland";
    const bool isGnome = qgetenv("XDG_CURRENT_DESKTOP").toLower().contains("gnome");
    return qEnvironmentVariableIsSet("DISPLAY") && (!isWayland || isGnome);
}

/// Empty where there is no server.
QByteArray resourcesOfTheServer()
{
    constexpr uint32_t mostWords = 16384;
    const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> server(xcb_connect(nullptr, nullptr),
                                                                                xcb_disconnect);
    if (xcb_connection_has_error(server.get()))
        return QByteArray();
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server.get())).data->root;
    const xcb_get_property_cookie_t asked =
        xcb_get_property(server.get(), 0, root, XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 0, mostWords);
    const std::unique_ptr<xcb_get_property_reply_t, void (*)(void*)> reply(
        xcb_get_property_reply(server.get(), asked, nullptr), std::free);
    return reply ? QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                              xcb_get_property_value_length(reply.get()))
                 : QByteArray();
}
#endif
} // namespace

qreal DesktopScale::ofResources(const QByteArray& resources)
{
    for (const QByteArray& line : resources.split('\n')) {
        const int colon = line.indexOf(':');
        if (colon < 0 || line.left(colon).trimmed() != "Xft.dpi")
            continue;
        const qreal resolution =
            qBound(usualResolution, line.mid(colon + 1).trimmed().toDouble(), usualResolution * densest);
        return int(resolution * 4 / usualResolution) / 4.0;
    }
    return 1;
}

bool DesktopScale::isToldToTheToolkit()
{
    for (const char* name : {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI"})
        if (qEnvironmentVariableIsSet(name))
            return true;
    return qgetenv("QT_AUTO_SCREEN_SCALE_FACTOR") == "0" || qgetenv("QT_ENABLE_HIGHDPI_SCALING") == "0";
}

qreal DesktopScale::ofDesktop()
{
#ifdef MELODRIFT_X11
    if (!isToldToTheToolkit() && startsOnX11())
        return ofResources(resourcesOfTheServer());
#endif
    return 1;
}
