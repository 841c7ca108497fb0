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

    // The launch token of the second process arrives beside its files, for the running one to
    // raise its window with; a launch without one hands over an empty token.
    void activationTokenReachesTheRunningInstance() {
        const QString name = uniqueName();
        SingleInstance running(name);
        QVERIFY(running.listen());
        QSignalSpy received(&running, &SingleInstance::filesReceived);
        QThread* sender = QThread::create(
            [name] { SingleInstance(name).handOver({"/tmp/a.png"}, "kwin-4711_TIME123456"); });
        connect(sender, &QThread::finished, sender, &QObject::deleteLater);
        sender->start();
        QTRY_COMPARE(received.count(), 1);
        QCOMPARE(received.at(0).at(0).toStringList(), QStringList({"/tmp/a.png"}));
        QCOMPARE(received.at(0).at(1).toByteArray(), QByteArray("kwin-4711_TIME123456"));

        QThread* plain = QThread::create([name] { SingleInstance(name).handOver({"/tmp/b.png"}); });
        connect(plain, &QThread::finished, plain, &QObject::deleteLater);
        plain->start();
        QTRY_COMPARE(received.count(), 2);
        QCOMPARE(received.at(1).at(0).toStringList(), QStringList({"/tmp/b.png"}));
        QVERIFY(received.at(1).at(1).toByteArray().isEmpty());
    }

    void noRunningInstanceMeansNoHandOver() {
        SingleInstance lonely(uniqueName());
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!lonely.handOver({"/tmp/a.png"}, {}, 500));
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
