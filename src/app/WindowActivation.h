#pragma once

#include <QByteArray>
#include <QString>

class QWidget;

// Bringing the window to the front for a later launch. A desktop lets a window take the focus
// only for the launch the user asked for: the launcher gives the new process a token
// (XDG_ACTIVATION_TOKEN on Wayland, DESKTOP_STARTUP_ID on X11), the second process hands it to
// the running one, and the running one activates its window with it.

// The launch token of this process, read before the platform plugin takes it from the
// environment; empty when the process was started without one.
QByteArray launchActivationToken();

// The X server time a startup id was made at (its "_TIME<n>" part); 0 when it has none.
quint32 startupIdTime(const QByteArray& startupId);

// How a token is used on a platform ("wayland", "xcb", anything else).
enum class ActivationRoute { Plain, WaylandToken, X11StartupId };
ActivationRoute activationRouteFor(const QString& platformName, const QByteArray& token);

// Raises and activates `window` with `token` (may be empty) on the running platform: on Wayland
// the token goes into XDG_ACTIVATION_TOKEN, which the Wayland plugin consumes on activation; on
// X11 the window's user time and the activation request carry the launch's time, and the
// launcher's busy feedback is ended. `platformName` is the running platform's unless given.
ActivationRoute activateWithToken(QWidget* window, const QByteArray& token,
                                  const QString& platformName = {});
