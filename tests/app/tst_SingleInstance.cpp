// A second launch hands its files to the running instance instead of opening a second window.

#include "app/SingleInstance.h"

#include <QProcess>
#include <QSignalSpy>
#include <QtTest>

class tst_SingleInstance : public QObject {
    Q_OBJECT

    static QString uniqueName() {
        return QString("ormidon-test-%1-%2").arg(QCoreApplication::applicationPid()).arg(++serial);
    }
    static inline int serial = 0;

private slots:
    void handOverReachesTheRunningInstance() {
        const QString name = uniqueName();
        SingleInstance running(name);
        QVERIFY(running.listen());
        QSignalSpy received(&running, &SingleInstance::filesReceived);

        // The second launch runs in another process, as a file manager would start it; the
        // event loop of this one answers meanwhile.
        SingleInstance second(name);
        bool handed = false;
        QTimer::singleShot(0, this, [&] {
            QThread* sender = QThread::create([&] {
                handed = second.handOver({"/tmp/one photo.jpg", "/tmp/写真 é.png"});
            });
            connect(sender, &QThread::finished, sender, &QObject::deleteLater);
            sender->start();
        });
        QTRY_COMPARE(received.count(), 1);
        QCOMPARE(received.at(0).at(0).toStringList(),
                 QStringList({"/tmp/one photo.jpg", "/tmp/写真 é.png"}));
        QTRY_VERIFY(handed);
    }

    void noRunningInstanceMeansNoHandOver() {
        SingleInstance lonely(uniqueName());
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!lonely.handOver({"/tmp/a.png"}, 500));
        QVERIFY(clock.elapsed() < 5000);
    }

    void secondListenerOnTheSameNameIsRefused() {
        const QString name = uniqueName();
        SingleInstance first(name);
        QVERIFY(first.listen());
        SingleInstance second(name);
        QVERIFY(!second.listen());
    }

    void launchWithNoFilesStillRaisesTheWindow() {
        const QString name = uniqueName();
        SingleInstance running(name);
        QVERIFY(running.listen());
        QSignalSpy received(&running, &SingleInstance::filesReceived);
        QThread* sender = QThread::create([name] { SingleInstance(name).handOver({}); });
        connect(sender, &QThread::finished, sender, &QObject::deleteLater);
        sender->start();
        QTRY_COMPARE(received.count(), 1);
        QVERIFY(received.at(0).at(0).toStringList().isEmpty());
    }
};

QTEST_MAIN(tst_SingleInstance)
#include "tst_SingleInstance.moc"
