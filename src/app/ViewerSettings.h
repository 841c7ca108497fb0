#pragma once

#include <QSettings>

// The viewer's own settings (slideshow seconds, the information panel, ...), kept in
// $XDG_CONFIG_HOME/Ormidon/viewer.ini beside the window frames, apart from the conversion
// settings of the preferences file.
QSettings viewerSettings();
