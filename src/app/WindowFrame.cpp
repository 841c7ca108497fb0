#include "app/WindowFrame.h"

#include <QSettings>
#include <QStandardPaths>
#include <QWidget>

namespace {

QSettings frameStore() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QSettings(folder + "/Ormidon/frames.ini", QSettings::IniFormat);
}

QString frameKey(const QString& name) { return "NSWindow Frame " + name; }

} // namespace

bool restoreWindowFrame(QWidget* window, const QString& name) {
    const QByteArray geometry = frameStore().value(frameKey(name)).toByteArray();
    return !geometry.isEmpty() && window->restoreGeometry(geometry);
}

void saveWindowFrame(const QWidget* window, const QString& name) {
    QSettings store = frameStore();
    store.setValue(frameKey(name), window->saveGeometry());
    store.sync();
}
