#pragma once

#include <QString>

class QWidget;

// Window frames saved under a name between runs, in the user's configuration folder
// ($XDG_CONFIG_HOME/Ormidon/frames.ini).
bool restoreWindowFrame(QWidget* window, const QString& name);
void saveWindowFrame(const QWidget* window, const QString& name);

// True on window systems where the compositor, not the program, chooses where a new window
// goes (Wayland): a position given there is ignored, so only the size is set.
bool windowSystemPlacesWindows(const QString& platformName);

// A window's first frame: `size` at the top left of the available screen, or the size alone
// where the window system places windows.
void setFirstFrame(QWidget* window, int width, int height);
