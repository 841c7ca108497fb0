#pragma once

#include <QSettings>

// The viewer's own settings files in the user's configuration folder ($XDG_CONFIG_HOME/Ormidon),
// kept apart from the conversion settings of the preferences file.

// viewer.ini: how the viewer is set up (slideshow pace, panels shown).
QSettings viewerSettings();

// frames.ini: window frames saved under a name between runs.
QSettings frameSettings();
