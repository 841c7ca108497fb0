#pragma once

// The open and destination panels are the desktop's own file dialogs in normal use: through
// xdg-desktop-portal when the desktop runs one (the same dialog sandboxed programs get), or the
// platform theme's native dialog otherwise. Qt's widget dialog stays for the platforms without
// a desktop (offscreen, minimal) and for scripted runs in a bare X server, which set
// ORMIDON_WIDGET_DIALOGS=1.

// Before the application exists: asks Qt for the portal's file dialog when no platform theme
// is chosen in the environment, the portal service is installed and Qt's portal theme is there.
// True when it asked (QT_QPA_PLATFORMTHEME is then set until the application has read it).
bool preferPortalDialogs();

// True when the panels are Qt's widget dialog rather than the desktop's.
bool useWidgetDialogs();
