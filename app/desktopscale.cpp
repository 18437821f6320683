// SPDX-License-Identifier: MIT
#include "app/desktopscale.h"

#include <QByteArray>
#include <QList>
#include <QtGlobal>

#ifdef PLENDRA_HAVE_XCB
#include <xcb/xcb.h>
#include <xcb/xproto.h>

#include <cstdlib>
#endif

namespace {

// The platform Qt will pick: an explicit xcb, or none named outside a Wayland
// session (where Qt prefers Wayland and the compositor gives the scale).
bool drawsThroughX11()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (!platform.isEmpty())
        return platform.startsWith("xcb");
    return qgetenv("XDG_SESSION_TYPE") != "wayland" && !qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

#ifdef PLENDRA_HAVE_XCB
// The resource database the desktop keeps on the root window of the screen.
QByteArray rootResources()
{
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
    QByteArray text;
    if (!xcb_connection_has_error(connection)) {
        xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
        for (int i = 0; i < screenNumber && screens.rem > 0; ++i)
            xcb_screen_next(&screens);
        if (screens.rem > 0) {
            const xcb_get_property_cookie_t asked = xcb_get_property(
                connection, 0, screens.data->root, XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 0, 1 << 16);
            if (xcb_get_property_reply_t* reply = xcb_get_property_reply(connection, asked, nullptr)) {
                text = QByteArray(static_cast<const char*>(xcb_get_property_value(reply)),
                                  xcb_get_property_value_length(reply));
                std::free(reply);
            }
        }
    }
    xcb_disconnect(connection);
    return text;
}
#endif

} // namespace

double x11ResourceDpi()
{
#ifdef PLENDRA_HAVE_XCB
    if (!drawsThroughX11() || qgetenv("DISPLAY").isEmpty())
        return 0.0;
    for (const QByteArray& line : rootResources().split('\n')) {
        const int colon = line.indexOf(':');
        if (colon < 0 || line.left(colon).trimmed() != "Xft.dpi")
            continue;
        bool ok = false;
        const double dpi = line.mid(colon + 1).trimmed().toDouble(&ok);
        return ok && dpi > 0.0 ? dpi : 0.0;
    }
#endif
    return 0.0;
}

void drawPointsAt72DpiTimesDesktopScale()
{
    if (qEnvironmentVariableIsSet("QT_FONT_DPI"))
        return;
    qputenv("QT_FONT_DPI", "72");
    // Qt's own rule on X11: the scale is Xft.dpi over 96. Set as a scale
    // factor it keeps applying while the font setting above hides Xft.dpi;
    // a scale factor the user gave multiplies it, as it would have.
    const double desktopScale = x11ResourceDpi() / 96.0;
    if (desktopScale <= 1.0)
        return;
    bool ok = false;
    double userFactor = qEnvironmentVariable("QT_SCALE_FACTOR").toDouble(&ok);
    if (!ok || userFactor <= 0.0)
        userFactor = 1.0;
    qputenv("QT_SCALE_FACTOR", QByteArray::number(userFactor * desktopScale));
}
