#include "app/ViewerSettings.h"

#include <QStandardPaths>

QSettings viewerSettings() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QSettings(folder + "/Ormidon/viewer.ini", QSettings::IniFormat);
}
