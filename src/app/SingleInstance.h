#pragma once

#include <QByteArray>
#include <QObject>
#include <QStringList>

class QLocalServer;

// One running Ormidon per user and display: a second launch hands its files to the running
// instance over a local socket and ends, as a file manager's "open with" expects.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    explicit SingleInstance(const QString& serverName, QObject* parent = nullptr);
    ~SingleInstance() override;

    // The socket name for this user and display.
    static QString defaultServerName();

    // Sends the paths and this launch's activation token (may be empty) to a running instance;
    // true when one took them.
    bool handOver(const QStringList& paths, const QByteArray& activationToken = {},
                  int timeoutMs = 2000) const;

    // Starts listening for later launches; false when the name cannot be taken.
    bool listen();

signals:
    void filesReceived(const QStringList& paths, const QByteArray& activationToken);

private:
    QString name;
    QLocalServer* server = nullptr;
};
