#include "app/SingleInstance.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QRegularExpression>

#include <unistd.h>

SingleInstance::SingleInstance(const QString& serverName, QObject* parent)
    : QObject(parent), name(serverName) {}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::defaultServerName() {
    QString display = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (display.isEmpty())
        display = qEnvironmentVariable("DISPLAY");
    display.replace(QRegularExpression("[^A-Za-z0-9_.-]"), "_");
    return QString("ormidon-%1-%2").arg(getuid()).arg(display);
}

bool SingleInstance::handOver(const QStringList& paths, const QByteArray& activationToken,
                              int timeoutMs) const {
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    // One item a line, marked by its first letter (T the activation token, F a path), then an
    // empty line that says the list is complete.
    QByteArray message;
    if (!activationToken.isEmpty())
        message += 'T' + activationToken + '\n';
    for (const QString& path : paths)
        message += 'F' + path.toUtf8() + '\n';
    message += '\n';
    socket.write(message);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    // The running instance closes the connection once it has the list.
    socket.waitForDisconnected(timeoutMs);
    return true;
}

bool SingleInstance::listen() {
    // Someone already answers on the name: that instance keeps it. Otherwise a socket file
    // left behind by an instance that crashed is cleared first.
    QLocalSocket probe;
    probe.connectToServer(name);
    if (probe.waitForConnected(500))
        return false;
    QLocalServer::removeServer(name);
    server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(name))
        return false;
    connect(server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                if (!socket->peek(1 << 20).contains("\n\n") && !socket->peek(2).startsWith('\n'))
                    return;
                QStringList paths;
                QByteArray token;
                for (const QByteArray& line : socket->readAll().split('\n')) {
                    if (line.startsWith('F'))
                        paths << QString::fromUtf8(line.mid(1));
                    else if (line.startsWith('T'))
                        token = line.mid(1);
                }
                socket->disconnectFromServer();
                emit filesReceived(paths, token);
            });
        }
    });
    return true;
}
