#include "app/SettingsFiles.h"

#include <QStandardPaths>

namespace {

QSettings settingsFile(const char* fileName) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QSettings(folder + "/Ormidon/" + QLatin1String(fileName), QSettings::IniFormat);
}

} // namespace

QSettings viewerSettings() { return settingsFile("viewer.ini"); }

QSettings frameSettings() { return settingsFile("frames.ini"); }
