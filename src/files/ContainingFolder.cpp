#include "files/ContainingFolder.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFileInfo>
#include <QObject>
#include <QUrl>

namespace {

void openFolder(const QString& filePath) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(filePath).absolutePath()));
}

} // namespace

void ContainingFolder::show(const QString& filePath, QObject* context, const QString& startupId) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openFolder(filePath);
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QString::fromLatin1(kService), QString::fromLatin1(kPath), QString::fromLatin1(kInterface),
        QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(QFileInfo(filePath).absoluteFilePath()).toString()}
         << startupId;
    // Asked without waiting: a file manager that is started for the call may take a while.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 10000), context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, filePath] {
        if (watcher->isError())
            openFolder(filePath);
        watcher->deleteLater();
    });
}
