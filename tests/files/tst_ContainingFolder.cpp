// Open Containing Folder on a private session bus: a file manager that answers ShowItems is
// asked to show the file itself; without one, the folder opens through the desktop's handler.
// And the menu item of the real window does the same for the current picture.

#include "app/Controller.h"
#include "files/ContainingFolder.h"

#include <QAction>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDesktopServices>
#include <QImage>
#include <QMainWindow>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

// Stands in for the desktop's file manager on the bus.
class FakeFileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QStringList shown;
public slots:
    void ShowItems(const QStringList& uris, const QString&) { shown += uris; }
};

// Catches what would go to the desktop's handler for file: URLs.
class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void openUrl(const QUrl& url) { opened.append(url); }
};

class tst_ContainingFolder : public QObject {
    Q_OBJECT

    QProcess bus;
    QTemporaryDir folder;
    UrlCatcher catcher;
    QString file;

private slots:
    void initTestCase() {
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            QSKIP("no dbus-daemon for a private session bus");
        bus.start(daemon, {"--session", "--nofork", "--print-address=1"});
        QVERIFY(bus.waitForStarted());
        QVERIFY(bus.waitForReadyRead(10000));
        const QByteArray address = bus.readLine().trimmed();
        QVERIFY(!address.isEmpty());
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        QVERIFY(QDBusConnection::sessionBus().isConnected());
        QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "openUrl");
        QVERIFY(folder.isValid());
        file = folder.path() + QStringLiteral("/my photo.png");
        QImage image(8, 8, QImage::Format_RGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(file));
    }

    void cleanupTestCase() {
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        if (bus.state() != QProcess::NotRunning) {
            bus.kill();
            bus.waitForFinished();
        }
    }

    void withoutAFileManagerTheFolderOpens() {
        catcher.opened.clear();
        ContainingFolder::show(file, this);
        QTRY_COMPARE(catcher.opened, QList<QUrl>{QUrl::fromLocalFile(folder.path())});
    }

    void aFileManagerIsAskedToShowTheFile() {
        FakeFileManager manager;
        QDBusConnection connection = QDBusConnection::sessionBus();
        QVERIFY(connection.registerObject(ContainingFolder::kPath, &manager,
                                          QDBusConnection::ExportAllSlots));
        QVERIFY(connection.registerService(ContainingFolder::kService));
        catcher.opened.clear();
        ContainingFolder::show(file, this);
        QTRY_COMPARE(manager.shown, QStringList{QUrl::fromLocalFile(file).toString()});
        QTest::qWait(100);
        QVERIFY(catcher.opened.isEmpty());

        // The menu item of the real window, on the current picture.
        QTemporaryDir home;
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        auto c = std::make_unique<Controller>();
        c->skipSplash = true;
        c->loadMainWindow();
        c->window()->show();
        QVERIFY(!c->itsMenuItemShowFolder->isEnabled());
        c->setSourceFileName(file, false);
        QVERIFY(c->itsMenuItemShowFolder->isEnabled());
        manager.shown.clear();
        c->itsMenuItemShowFolder->trigger();
        QTRY_COMPARE(manager.shown, QStringList{QUrl::fromLocalFile(file).toString()});
        c.reset();

        connection.unregisterService(ContainingFolder::kService);
        connection.unregisterObject(ContainingFolder::kPath);
    }
};

QTEST_MAIN(tst_ContainingFolder)
#include "tst_ContainingFolder.moc"
