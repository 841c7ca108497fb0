// A window handed a later launch comes to the front with that launch's token.

#include "app/WindowActivation.h"

#include <QMainWindow>
#include <QtTest>

class tst_WindowActivation : public QObject {
    Q_OBJECT

private slots:
    void startupIdTime_data() {
        QTest::addColumn<QByteArray>("id");
        QTest::addColumn<uint>("time");
        QTest::newRow("launcher id") << QByteArray("kwin-4711-host-0_TIME123456") << 123456u;
        QTest::newRow("no time part") << QByteArray("a8d3c1f0-token") << 0u;
        QTest::newRow("time not last") << QByteArray("x_TIME12-y") << 0u;
        QTest::newRow("empty") << QByteArray() << 0u;
        QTest::newRow("too large") << QByteArray("x_TIME99999999999") << 0u;
    }
    void startupIdTime() {
        QFETCH(QByteArray, id);
        QFETCH(uint, time);
        QCOMPARE(::startupIdTime(id), time);
    }

    void routeFollowsThePlatform() {
        QCOMPARE(activationRouteFor("wayland", "t"), ActivationRoute::WaylandToken);
        QCOMPARE(activationRouteFor("wayland-egl", "t"), ActivationRoute::WaylandToken);
        QCOMPARE(activationRouteFor("xcb", "t"), ActivationRoute::X11StartupId);
        QCOMPARE(activationRouteFor("offscreen", "t"), ActivationRoute::Plain);
        QCOMPARE(activationRouteFor("wayland", QByteArray()), ActivationRoute::Plain);
    }

    // The launch token is read from the environment of the launch, Wayland's first.
    void launchTokenComesFromTheEnvironment() {
        qunsetenv("XDG_ACTIVATION_TOKEN");
        qputenv("DESKTOP_STARTUP_ID", "launcher_TIME42");
        QCOMPARE(launchActivationToken(), QByteArray("launcher_TIME42"));
        qputenv("XDG_ACTIVATION_TOKEN", "wayland-token");
        QCOMPARE(launchActivationToken(), QByteArray("wayland-token"));
        qunsetenv("XDG_ACTIVATION_TOKEN");
        qunsetenv("DESKTOP_STARTUP_ID");
        QVERIFY(launchActivationToken().isEmpty());
    }

    // On Wayland the token is put where the Wayland plugin takes it when the window asks to be
    // activated (the offscreen platform of this test leaves it there to be seen); the window is
    // shown and raised on every platform.
    void waylandTokenIsAppliedToTheWindow() {
        qunsetenv("XDG_ACTIVATION_TOKEN");
        QMainWindow window;
        QCOMPARE(activateWithToken(&window, "wayland-token-7", "wayland"),
                 ActivationRoute::WaylandToken);
        QVERIFY(window.isVisible());
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), QByteArray("wayland-token-7"));
        qunsetenv("XDG_ACTIVATION_TOKEN");

        QMainWindow other;
        QCOMPARE(activateWithToken(&other, QByteArray()), ActivationRoute::Plain);
        QVERIFY(other.isVisible());
        QVERIFY(qgetenv("XDG_ACTIVATION_TOKEN").isEmpty());
    }
};

QTEST_MAIN(tst_WindowActivation)
#include "tst_WindowActivation.moc"
