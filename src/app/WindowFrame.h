#pragma once

#include <QString>

class QWidget;

// Window frames saved under a name between runs, in the user's configuration folder
// ($XDG_CONFIG_HOME/Ormidon/frames.ini).
bool restoreWindowFrame(QWidget* window, const QString& name);
void saveWindowFrame(const QWidget* window, const QString& name);
