#include "app/WindowFrame.h"

#include "app/SettingsFiles.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace {

QString frameKey(const QString& name) { return "NSWindow Frame " + name; }

} // namespace

bool restoreWindowFrame(QWidget* window, const QString& name) {
    const QByteArray geometry = frameSettings().value(frameKey(name)).toByteArray();
    return !geometry.isEmpty() && window->restoreGeometry(geometry);
}

void saveWindowFrame(const QWidget* window, const QString& name) {
    QSettings store = frameSettings();
    store.setValue(frameKey(name), window->saveGeometry());
    store.sync();
}

bool windowSystemPlacesWindows(const QString& platformName) {
    return platformName.startsWith(QLatin1String("wayland"));
}

void setFirstFrame(QWidget* window, int width, int height) {
    window->resize(width, height);
    if (windowSystemPlacesWindows(QGuiApplication::platformName()))
        return;
    const QScreen* screen = QGuiApplication::primaryScreen();
    window->move(screen ? screen->availableGeometry().topLeft() : QPoint(0, 0));
}
