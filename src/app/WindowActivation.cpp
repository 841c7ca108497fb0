#include "app/WindowActivation.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QWidget>
#include <QWindow>
#include <QtGui/qguiapplication_platform.h>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

xcb_atom_t internAtom(xcb_connection_t* connection, const char* name) {
    const xcb_intern_atom_cookie_t cookie =
        xcb_intern_atom(connection, 0, static_cast<uint16_t>(std::strlen(name)), name);
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

xcb_window_t rootOf(xcb_connection_t* connection) {
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

// Startup notification: a text message sent to the root window in 20-byte pieces, the first
// as _NET_STARTUP_INFO_BEGIN, the rest as _NET_STARTUP_INFO, from a window of our own.
void sendStartupMessage(xcb_connection_t* connection, const QByteArray& text) {
    const xcb_window_t root = rootOf(connection);
    const xcb_window_t sender = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, sender, root, -100, -100, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    const xcb_atom_t begin = internAtom(connection, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t more = internAtom(connection, "_NET_STARTUP_INFO");
    QByteArray message = text;
    message.append('\0');
    for (qsizetype sent = 0; sent < message.size(); sent += 20) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 8;
        event.window = sender;
        event.type = sent == 0 ? begin : more;
        std::memcpy(event.data.data8, message.constData() + sent,
                    std::min<qsizetype>(20, message.size() - sent));
        xcb_send_event(connection, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char*>(&event));
    }
    xcb_destroy_window(connection, sender);
}

// The launch's time becomes the window's last user time, and the activation request says it
// comes from an application at that time, so that focus-stealing prevention lets it through.
bool activateOnX11(QWidget* widget, const QByteArray& startupId) {
    auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    QWindow* window = widget->windowHandle();
    if (!x11 || !x11->connection() || !window)
        return false;
    xcb_connection_t* connection = x11->connection();
    const xcb_window_t id = static_cast<xcb_window_t>(window->winId());
    const quint32 time = startupIdTime(startupId);
    if (time != 0) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id,
                            internAtom(connection, "_NET_WM_USER_TIME"), XCB_ATOM_CARDINAL, 32, 1,
                            &time);
    }
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id,
                        internAtom(connection, "_NET_STARTUP_ID"),
                        internAtom(connection, "UTF8_STRING"), 8,
                        static_cast<uint32_t>(startupId.size()), startupId.constData());
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = id;
    event.type = internAtom(connection, "_NET_ACTIVE_WINDOW");
    event.data.data32[0] = 1; // from an application
    event.data.data32[1] = time != 0 ? time : XCB_CURRENT_TIME;
    xcb_send_event(connection, 0, rootOf(connection),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    sendStartupMessage(connection, "remove: ID=" + startupId);
    xcb_flush(connection);
    return true;
}

} // namespace

QByteArray launchActivationToken() {
    const QByteArray wayland = qgetenv("XDG_ACTIVATION_TOKEN");
    return wayland.isEmpty() ? qgetenv("DESKTOP_STARTUP_ID") : wayland;
}

quint32 startupIdTime(const QByteArray& startupId) {
    static const QRegularExpression timePart(QStringLiteral("_TIME([0-9]+)$"));
    const QRegularExpressionMatch match = timePart.match(QString::fromLatin1(startupId));
    bool ok = false;
    const quint32 time = match.hasMatch() ? match.captured(1).toUInt(&ok) : 0;
    return ok ? time : 0;
}

ActivationRoute activationRouteFor(const QString& platformName, const QByteArray& token) {
    if (token.isEmpty())
        return ActivationRoute::Plain;
    if (platformName.startsWith(QLatin1String("wayland")))
        return ActivationRoute::WaylandToken;
    if (platformName == QLatin1String("xcb"))
        return ActivationRoute::X11StartupId;
    return ActivationRoute::Plain;
}

ActivationRoute activateWithToken(QWidget* window, const QByteArray& token,
                                  const QString& platformName) {
    const ActivationRoute route = activationRouteFor(
        platformName.isEmpty() ? QGuiApplication::platformName() : platformName, token);
    window->show();
    window->raise();
    if (route == ActivationRoute::X11StartupId && activateOnX11(window, token))
        return route;
    if (route == ActivationRoute::WaylandToken)
        qputenv("XDG_ACTIVATION_TOKEN", token); // taken and cleared by the activation below
    window->activateWindow();
    return route;
}
