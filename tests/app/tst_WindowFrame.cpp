// The window's first frame: where the program may place it, and where the window system does.

#include "app/WindowFrame.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QtTest>

class tst_WindowFrame : public QObject {
    Q_OBJECT

private slots:
    void waylandPlacesWindowsItself() {
        QVERIFY(windowSystemPlacesWindows("wayland"));
        QVERIFY(windowSystemPlacesWindows("wayland-egl"));
        QVERIFY(!windowSystemPlacesWindows("xcb"));
        QVERIFY(!windowSystemPlacesWindows("offscreen"));
    }

    // Where the program places the window, the first frame is at the top left of the screen.
    void firstFrameIsSizedAndPlaced() {
        QWidget window;
        window.move(200, 150);
        setFirstFrame(&window, 850, 680);
        QCOMPARE(window.size(), QSize(850, 680));
        QCOMPARE(window.pos(), QGuiApplication::primaryScreen()->availableGeometry().topLeft());
    }
};

QTEST_MAIN(tst_WindowFrame)
#include "tst_WindowFrame.moc"
